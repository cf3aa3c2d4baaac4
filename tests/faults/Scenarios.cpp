// The list of jobs. Images are small, so that a run takes no longer than its platform calls.

#include "Runs.h"

namespace {

constexpr int kWidth = 21, kHeight = 90;
constexpr LONG kWhole = 1 << 20, kBands = 20000; // budgets in which the images are whole, or banded
const std::string kPixels = Numbered(200000);

/// Goes on after a success only.
void Ok(DWORD nResult)
{
    if (nResult != MM_SUCCESS)
        throw nResult;
}

/// The same for an operation that tells 1 for success and 0 for a failure, mostly of memory.
void Done(int nDone)
{
    Ok(nDone ? MM_SUCCESS : MM_NO_MEMORY);
}

/// An external image and the object's format.
struct Form
{
    int nFileType, nExternal, nObject, nHeader, nLineBytes;
};

/// A job's name, which tells its variant.
struct Name : std::string
{
    bool Has(const char* pszWord) const { return find(pszWord) != npos; }
    Form Pixels() const
    {
        return Has("Raw") ? Form{MM_FILE_RAW, MM_FORMAT_RAW48, MM_FORMAT_RAW64, 0, 6 * kWidth}
                          : Form{MM_FILE_BITMAP, MM_FORMAT_BGR24, MM_FORMAT_BGRA32, kHeader, 64};
    }
    /// The access of the input, which is named first, or of the output, which is named last.
    tag_E_ACSTYPE Access(bool bInput) const
    {
        const auto at = [&](const char* pszWord) { return bInput ? find(pszWord) : rfind(pszWord) + 1; };
        const std::size_t places[] = {at("Mapped"), at("Block"), at("FileIo")};
        const auto pPlace =
            bInput ? std::min_element(places, places + 3) : std::max_element(places, places + 3);
        return tag_E_ACSTYPE(pPlace - places);
    }
};

/// An input in a file or block of the host's, or room for an output.
T_ImgInf External(Job& job, const Name& name, bool bInput)
{
    const auto [nFileType, nExternal, nObject, nHeader, nLineBytes] = name.Pixels();
    const tag_E_ACSTYPE eAccess = name.Access(bInput);
    std::string s = ("BM" + std::string(kHeader, 'h')).substr(0, std::size_t(nHeader)) +
                    kPixels.substr(0, std::size_t(nLineBytes * kHeight));
    if (!bInput)
        s.assign(eAccess == ACS_MEMORY ? s.size() : 0, 'x');
    void* pData = eAccess == ACS_MEMORY ? job.Block(s, bInput) : job.File(s, bInput);
    return {nFileType,
            eAccess,
            pData,
            bInput ? nHeader : 0,
            kWidth,
            kHeight,
            bInput ? nExternal : nObject,
            bInput ? nObject : nExternal,
            nLineBytes};
}

/// An object that tells when it is destroyed whether it withholds the reserve.
template <class Object> struct Noted : Object
{
    explicit Noted(Job& job) : m_job(job) {}
    ~Noted() { m_job.bReplanned = m_job.bReplanned || this->m_nReserveTaken == 1; }
    void Plan()
    {
        tag_MemAlloc request;
        CImageObj* pThis = this;
        Ok(CImageObj::MemoryAlloc(&request, &pThis, nullptr, nullptr));
    }

private:
    Job& m_job;
};

/// Lends every line of an image, band by band.
template <class Work> void EachLine(CImageObj& image, Work work)
{
    T_ImageLrg_tag band{};
    for (int y = 0; y < image.m_ImgInfo.nHeight;) {
        Ok(image.MapBand(y, &band, MM_BAND_DOWNWARD, 0));
        for (; y <= band.nBandBottom; ++y)
            work(y, band.pImage + std::ptrdiff_t{y - band.nBandTop} * band.nLineBytes, band);
        Ok(image.UnmapBand(0));
    }
}

/// Puts the lines, with so many pixels on both sides.
void Take(Job& job, CImageObj& image, int nBeside = 0)
{
    EachLine(image, [&](int, unsigned char* pLine, const T_ImageLrg_tag& band) {
        job.Put(pLine - nBeside * band.nPixelBytes,
                std::size_t((band.nWidth + 2 * nBeside) * band.nPixelBytes));
    });
}

/// What a failed operation has left is looked at while nothing fails.
template <class Look> void ExpectBytes(const Job& job, const std::string& sWanted, Look look)
{
    faults::g_bOn = false;
    Job found(job.sandbox);
    try {
        look(found);
    } catch (DWORD) {
        found.sBytes.clear();
    }
    Ok(found.sBytes == sWanted ? MM_SUCCESS : kBroken);
}

/// An image of the pipeline.
struct Image : Noted<CImageObj>
{
    explicit Image(Job& job) : Noted(job)
    {
        T_ImageLrg_tag info{};
        info.nWidth = kWidth;
        info.nHeight = kHeight;
        info.nMarginX = info.nMarginY = 4;
        info.nFormat = MM_FORMAT_BGRA32;
        info.nRatio = 100;
        Ok(SetImageInfo(&info));
    }
    void Fill()
    {
        EachLine(*this, [](int y, unsigned char* pLine, const T_ImageLrg_tag&) {
            std::memcpy(pLine, &kPixels[std::size_t(y)], std::size_t(4 * kWidth));
        });
    }
    void PlanAndFill()
    {
        Plan();
        Fill();
    }
    void ExpectIntact(const Job& job)
    {
        std::string sWanted;
        for (int y = 0; y < kHeight; ++y)
            sWanted += kPixels.substr(std::size_t(y), 4 * kWidth);
        ExpectBytes(job, sWanted, [this](Job& found) { Take(found, *this); });
    }
};

/// A standalone buffer.
struct Buffer : T_ImageLrg_tag
{
    explicit Buffer(int nLines, int nMargin, int nCode) : T_ImageLrg_tag{}
    {
        Ok(CImageObj::AllcImgBufLrg(this, kWidth, nLines, nMargin, nMargin, nCode, MM_ALIGN_PACKED));
    }
    ~Buffer() { CImageObj::FreeImgBufLrg(this); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    T_Image_tag Flat() const
    {
        T_Image_tag flat;
        std::memcpy(&flat, static_cast<const T_ImageLrg_tag*>(this), sizeof(flat));
        return flat;
    }
    /// After an operation that may have freed the block, whose charge stays the host's.
    void Back(const T_Image_tag& flat, DWORD nResult)
    {
        if (!flat.pBase)
            CImageObj::UpdateUseMemory(nBufSize);
        pBase = flat.pBase;
        Ok(nResult);
    }
};

void Transfer(Job& job, const Name& name)
{
    T_ImgInf in = External(job, name, true), out = External(job, name, false);
    const int nBottomUp = name.Has("Raw") ? 1 : 0;
    Noted<CImageObj> image(job);
    Ok(ImportImg(&image, &in, nBottomUp, nullptr));
    Ok(ExportImg(&image, &out, nBottomUp, nullptr, 1));
}

// Stores ---------------------------------------------------------------------------------------------------

constexpr int kStore = 150000, kStoreBand = kStore / 3;

/// A store that is destroyed with its scope.
template <class Store> struct Owned : Store
{
    ~Owned() { this->Destroy(); }
};

/// Copies the image into a store, or puts what is there. A band that an external store could not write is
/// ended once more: it must not be shifted then.
void Pass(Job& job, CImageCtrl& store, bool bIn)
{
    for (DWORD nAt = 0; nAt < DWORD{kStore}; nAt += kStoreBand) {
        char* pBand = static_cast<char*>(store.MapBandAdress(nAt, kStoreBand, 0));
        Ok(pBand ? MM_SUCCESS : MM_NO_BAND_ADDRESS);
        bIn ? void(std::memcpy(pBand, &kPixels[nAt], kStoreBand)) : job.Put(pBand, kStoreBand);
        const DWORD nResult = store.FreeBandAdress(0);
        Ok(nResult == MM_FILE_ACCESS ? store.FreeBandAdress(0) : nResult);
    }
}

/// Takes a store along the path that the name ends with: p puts the image, g gets it, c makes it a file, m
/// maps it whole, w plans it whole.
void Walk(Job& job, const Name& name)
{
    Owned<CImageCtrl> store;
    store.SetHdrSize(name.Has("Made") ? 0 : kHeader);
    Ok(store.Create(kStore, name.Has("File") ? 0 : kStore, 1));
    for (const char chStep : name.substr(name.rfind('_') + 1))
        if (chStep == 'm') {
            Ok(store.MapBandAll(0, kStore, 0));
        } else if (chStep == 'w') {
            Ok(store.Create(kStore, kStore, 1));
        } else if (chStep != 'c') {
            Pass(job, store, chStep == 'p');
        } else if (const DWORD nResult = store.ConvertFile(kStore); nResult != MM_SUCCESS) {
            const auto get = [&](Job& found) { Pass(found, store, false); };
            ExpectBytes(job, kPixels.substr(0, kStore), get); // it stays in memory
            throw nResult;
        }
}

void ExternalStore(Job& job, const Name& name)
{
    Owned<CImageCtrlIO> store;
    const bool bInput = name.Has("Input");
    const tag_E_ACSTYPE eAccess = name.Access(true);
    std::string s = std::string(kHeader, 'h') + kPixels.substr(0, kStore);
    if (!bInput)
        s.assign(std::size_t(eAccess == ACS_MEMORY ? kHeader + kStore : 3 * kHeader), 'x'); // appended to
    store.SetAcsType(eAccess);
    store.SetImgType(bInput ? IMG_INPUT : IMG_OUTPUT);
    store.SetHederSize(kHeader);
    store.SetFileSize(kHeader + kStore);
    eAccess == ACS_MEMORY ? store.SetImageData(job.Block(s, bInput))
                          : store.SetFileHandle(job.File(s, bInput));
    Ok(store.CreateTMPBuf(100));
    Ok(store.Create(kHeader + kStore, name.Has("Bands") ? kStoreBand : kHeader + kStore, 1));
    Pass(job, store, !bInput);
}

/// An external image as an I/O object, ten lines at a time.
void Host(Job& job, const Name& name)
{
    const bool bInput = name.Has("Input");
    T_ImgInf inf = External(job, name, bInput);
    Noted<CImageObjIO> io(job);
    Ok(io.InitForUnify(&inf, bInput ? IMG_INPUT : IMG_OUTPUT, 0, 0, 0, MM_ALIGN_LINES, 0,
                       name.Has("Work") ? 1 : 0));
    io.Plan();
    std::string sLines(std::size_t(10 * io.m_ImgInfo.nLineBytes), 'l');
    const auto pLines = reinterpret_cast<unsigned char*>(sLines.data());
    T_ImageLrg_tag band{};
    for (int y = 0; y < kHeight; y += 10)
        if (bInput) {
            Ok(io.MapBandRangeBuf(y, y + 9, pLines, &band));
            Ok(io.UnmapBand(0));
            job.sBytes += sLines;
        } else {
            Ok(io.MapBandRange(y, y + 9, &band, 0));
            std::memcpy(pLines, &kPixels[std::size_t(y)], sLines.size());
            Ok(io.UnmapBand(pLines, 0));
        }
}

// Images and steps -----------------------------------------------------------------------------------------

/// A step with a temporary, after which its output is an input; then the two change places.
void TwoSteps(Job& job, const Name&)
{
    Image in(job), out(job), tmp(job);
    in.PlanAndFill();
    CImageObj *pIn = &in, *pOut = &out, *pTmp = &tmp;
    tag_MemAlloc step;
    step.nOutCnt = step.nTmpCnt = 1;
    Ok(CImageObj::MemoryAlloc(&step, &pIn, &pOut, &pTmp));
    tmp.Fill();
    Take(job, tmp);
    Ok(CImageObj::MemoryRelease(&step, &pTmp));
    Take(job, in);
    out.Fill();
    in.ExchangeImg(&out);
    Ok(out.Destroy());
    in.Plan();
    Take(job, in);
}

void BecomeAFile(Job& job, const Name&)
{
    Image image(job);
    image.PlanAndFill();
    const DWORD nResult = image.CnvFileImg();
    if (nResult != MM_SUCCESS)
        image.ExpectIntact(job);
    Ok(nResult);
    image.Plan();
    Take(job, image);
}

/// Bands are read with their frames, or a block is copied to another place.
void FramesOrBlock(Job& job, CImageObj& image, bool bBlock)
{
    if (bBlock) {
        Buffer block(40, 2, MM_FORMAT_BGRA32);
        Ok(image.MapBlock(20, 59, 5, 14, &block));
        job.Put(block.pBase, std::size_t(block.nBufSize));
        Ok(image.UnMapBlock(30, 69, 6, 15, &block));
    } else {
        Ok(image.SetFsize(3));
        Ok(image.SetFrameColor(MM_FRAME_MIRROR, -1));
        Take(job, image, 3);
    }
}

void OwnBands(Job& job, const Name& name)
{
    Image image(job);
    image.PlanAndFill();
    FramesOrBlock(job, image, name.Has("Blocks"));
    Take(job, image);
}

// Unit objects ---------------------------------------------------------------------------------------------

/// An image that is copied, read with frames or by a block, made flat, or takes the set-up of another object.
void Unit(Job& job, const Name& name)
{
    T_ImgInf in = External(job, name, true), out = External(job, name, false);
    CImageObj image, other;
    image.m_ImgInfo.nMarginX = image.m_ImgInfo.nMarginY = 3;
    Ok(ImportImgForUnit(&image, &in, &out, name.Has("Copy") ? 1 : 0, nullptr, MM_ALIGN_PACKED, 1));
    if (name.Has("Flat")) {
        Buffer to(kHeight, 3, MM_FORMAT_RAW64);
        T_Image_tag back = to.Flat();
        to.Back(back, CImageObj::DebugConvertT_Image(&image, &back));
        job.Put(back.pBase, std::size_t(back.nBufSize));
    } else if (name.Has("Exchange")) {
        Ok(ImportImgForUnit(&other, &in, &out, 0, nullptr, MM_ALIGN_PACKED, 1));
        Ok(image.Destroy()); // a target holds no store
        CImageObj::ExchangeImg(&image, &other);
        Ok(DuplicateImageForUnit(&image));
    } else if (name.Has("Copy")) {
        Ok(DuplicateImageForUnit(&image));
    } else {
        FramesOrBlock(job, image, name.Has("Blocks"));
    }
}

/// An image that one object reads, and that another one writes, if there is one.
void Reader(Job& job, const Name& name)
{
    T_ImgInf in = External(job, name, true);
    CImageObj reader, writer;
    if (name.Has("Pair")) {
        T_ImgInf out = External(job, name, false);
        Ok(ImportImgForUnitEnLarge(&writer, &out, &reader, &in, 0, nullptr, 0));
        Ok(DuplicateImageForUnit(&writer, &reader));
    } else {
        Ok(ImportImgForUnitJudge(&reader, &in, 1, nullptr, 0));
        Take(job, reader);
    }
}

// Tables, reports, dumps -----------------------------------------------------------------------------------

/// A failure leaves the table as it was; an old value is gone when the new one has no room.
void KeyTable(Job& job, const Name&)
{
    const std::tuple<const char*, const char*, int> writes[] = {
        {"one", "A", 1}, {"one", "b", 2}, {"two", "A", 9}, {"one", "a", 3}};
    CWorkTableList table;
    int nDone = 0;
    for (const auto& [pszSection, pszKey, nValue] : writes) {
        const int nResult = table.KeyWriteInt(pszSection, pszKey, nValue);
        Ok(table.KeyReadInt(pszSection, pszKey, -1) == (nResult ? nValue : -1) ? MM_SUCCESS : kBroken);
        nDone += nResult;
    }
    nDone += table.FlushData((job.sandbox.sRoot + "tmp/text").c_str());
    job.sBytes = job.sandbox.Take("tmp");
    Done(nDone == 5);
}

void WorkBuffers(Job& job, const Name&)
{
    CWorkTableList table;
    unsigned char *pFirst = nullptr, *pSecond = nullptr;
    Done(table.SetWorkTable(&pFirst, 1000));
    Done(table.SetWorkTable(&pSecond, 100000));
    for (int i = 0; i < 2; ++i)
        Ok(CImageObj::AllocWorkMem(&table));
    job.Put(pFirst, 101000);
    CImageObj::ReleaseWorkMem(&table);
}

/// One buffer, then two of which the second needs a larger block.
void BaseBuffers(Job& job, const Name&)
{
    T_BaseBuf_tag record{};
    Ok(DWORD(BaseMallocInit(&record)));
    for (int i = 0; i < 2; ++i) {
        record.nBufCnt = record.nBufLines[0] = record.nBufLines[1] = i + 1;
        record.nBufPitch[0] = record.nBufPitch[1] = (2 << 20) * i + 9;
        const DWORD nResult = DWORD(BaseMallocMain(&record, 1, 7));
        Ok(nResult != MM_SUCCESS && (record.pMem || record.pBuf[0]) ? kBroken : nResult);
        job.Put(record.pBuf[i], 9);
    }
    BaseMallocFree(&record);
}

/// What a host records of a step.
void Reports(Job& job, const Name&)
{
    Image image(job);
    image.PlanAndFill();
    CImageObj* pImage = &image;
    tag_MemAlloc request;
    CWorkTableList work;
    CImageObj::ms_WorkList = &work;
    CImageObj::DbgCImgLogInit();
    const bool bDone = CImageObj::ThreadList(0x8000, 0, "work") && CImageObj::MapList(nullptr, "address") &&
                       CImageObj::UseMemoryListImg(&request, &pImage, nullptr, nullptr) &&
                       work.FlushData((job.sandbox.sRoot + "tmp/text").c_str());
    CImageObj::DbgCImgLogEnd();
    CImageObj::ms_WorkList = nullptr;
    job.sBytes = job.sandbox.Take("logdata/trace") + job.sandbox.Take("tmp");
    Done(bDone);
}

/// A picture of the object and two of a flat buffer.
void Dumps(Job& job, const Name&)
{
    Image image(job);
    image.PlanAndFill();
    const std::string sPicture = job.sandbox.sRoot + "logdata/trace/image.bmp";
    std::ofstream(sPicture) << std::string(1 << 20, 'o');
    image.OutPutBmp("image", 0);
    const bool bOlder = fs::exists(sPicture) && fs::file_size(sPicture) == 1 << 20;
    Ok(bOlder && !faults::HasFailed("DeleteFileA") ? kBroken : MM_SUCCESS);
    const Buffer buffer(kHeight, 2, MM_FORMAT_RAW64);
    T_Image_tag flat = buffer.Flat();
    CImageObj::Output("flat", &flat);
    image.ExpectIntact(job);
    job.sBytes = job.sandbox.Take("logdata/trace") + job.sandbox.Take("tmp");
}

/// A flat buffer becomes an object's image, and that a flat buffer again.
void FlatAndBack(Job& job, const Name&)
{
    Buffer from(kHeight, 0, MM_FORMAT_RAW64), to(kHeight, 0, MM_FORMAT_RAW64);
    T_Image_tag flat = from.Flat(), back = to.Flat();
    std::memcpy(flat.pBase, kPixels.data(), std::size_t(flat.nBufSize));
    CImageObj image;
    image.m_ImgInfo.nBandLines = 60;
    from.Back(flat, CImageObj::DebugConvertCImageObj(&flat, &image));
    to.Back(back, CImageObj::DebugConvertT_Image(&image, &back));
    job.Put(back.pBase, std::size_t(back.nBufSize));
}

void OneBuffer(Job&, const Name&)
{
    const Buffer buffer(30, 2, MM_FORMAT_RAW64);
}

// An explicit instantiation may name private members; the friend hands it to the job.
auto CleanUp();
template <auto pClean> struct Reach
{
    friend auto CleanUp() { return pClean; }
};
template struct Reach<&CImageCtrl::RemoveTmpFiles>;

void TempFolder(Job& job, const Name&)
{
    for (const char* pszName : {"LRG1.tmp", "LRG2.tmp", "other"})
        std::ofstream(faults::g_sTemp + pszName) << pszName;
    const DWORD nResult = CImageCtrl::GetTempDirctoryName();
    if (nResult == MM_SUCCESS)
        CleanUp()();
    job.sBytes = job.sandbox.Take("temp");
    Ok(nResult);
}

// clang-format off
/// What jobs whose names start alike do, and the results that are documented besides success.
const struct
{
    const char* pszStart;
    void (*pRun)(Job&, const Name&);
    std::vector<DWORD> results;
} kFamilies[] = {
    {"Transfer", Transfer, {1, 49, 65, 66, 67, 68, 69, 71, 81, 82}},
    {"Host", Host, {1, 49, 67, 68, 70, 71, 82}}, {"External", ExternalStore, {1, 49, 67, 68, 69, 82}},
    {"Store", Walk, {1, 49, 65, 66, 69, 81}},
    {"Steps", TwoSteps, {1, 49, 65, 66, 69, 81}},
    {"Convert", BecomeAFile, {1, 49, 65, 66, 69, 81}},
    {"Own", OwnBands, {1, 49, 69, 81}}, {"Unit", Unit, {1, 49}}, {"Reader", Reader, {1, 49}},
    {"Flat", FlatAndBack, {1, 49, 69, 81}}, {"KeyTable", KeyTable, {1}}, {"WorkBuffers", WorkBuffers, {1}},
    {"BaseBuffers", BaseBuffers, {1}}, {"OneBuffer", OneBuffer, {1}}, {"SilentCleanUp", TempFolder, {18}},
    {"SilentReports", Reports, {1, 49, 69, 81}}, {"SilentDumps", Dumps, {1, 49, 69, 81}}};
// clang-format on

// {a,b} stands for one name with each.
constexpr char kNames[] = R"(
Transfer{Bitmap,Raw}{Mapped,Block,FileIo}{Whole,Bands}
Host{Input,Output}{Mapped,Block,FileIo}{Whole,Bands}{,Work}
External{Input,Output}{Mapped,Block,FileIo}{Whole,Bands}
Store_pg StoreMade_pcg StoreMade_pcmg StoreFile_pg StoreFile_pmg StoreFileMade_pwgcg
{Steps,Convert,OwnFrames,OwnBlocks,Flat,SilentDumps}{Whole,Bands}
UnitCopy{Bitmap,Raw}{Mapped,Block,FileIo}{Mapped,Block,FileIo}Bands
Unit{Frames,Blocks}{Mapped,Block,FileIo}{Mapped,Block}Bands
UnitExchangeMappedBands UnitFlatRawFileIoBlockBands
ReaderPair{Mapped,Block,FileIo}{Mapped,Block,FileIo}Bands Reader{Block,FileIo}Bands
KeyTable WorkBuffers BaseBuffers OneBuffer SilentReports SilentCleanUp
)";

void AddJobs(std::vector<Scenario>& all, const Name& name)
{
    if (const auto nOpen = name.find('{'); nOpen != Name::npos) {
        const auto nClose = name.find('}');
        std::istringstream words(name.substr(nOpen + 1, nClose - nOpen - 1) + ',');
        for (std::string sWord; std::getline(words, sWord, ',');)
            AddJobs(all, {name.substr(0, nOpen) + sWord + name.substr(nClose + 1)});
        return;
    }
    for (const auto& family : kFamilies)
        if (name.starts_with(family.pszStart))
            all.push_back({name, family.results, [=](Job& job) { family.pRun(job, name); },
                           name.Has("Bands") ? kBands : kWhole, name.Has("Silent")});
}

} // namespace

const std::vector<Scenario>& Scenarios()
{
    static const std::vector<Scenario> all = [] {
        std::vector<Scenario> made;
        std::istringstream names(kNames);
        for (Name name; names >> name;)
            AddJobs(made, name);
        return made;
    }();
    return all;
}
