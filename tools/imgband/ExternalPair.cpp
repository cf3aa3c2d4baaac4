// Filling the library's parameter records from files or blocks.

#include "ExternalPair.h"

#include "Failure.h"

#include <fmt/format.h>

#include <new>

namespace {

std::unique_ptr<unsigned char[]> MakeBlock(const std::string& szPath, std::int64_t nBytes)
{
    auto pBlock =
        std::unique_ptr<unsigned char[]>(new (std::nothrow) unsigned char[static_cast<std::size_t>(nBytes)]);
    if (!pBlock)
        throw Failure(ExitStatus::JobFailed, szPath,
                      fmt::format("there is no memory for a picture of {} bytes", nBytes), "--access file");
    return pBlock;
}

std::int64_t PictureBytes(const PictureFacts& facts)
{
    return facts.nOffset + LineBytes(facts.eFormat, facts.size.nWidth) * facts.size.nHeight;
}

} // namespace

ExternalPair::ExternalPair(Access eAccess, const InputFile* pInput, OutputFile& output, Format eTo,
                           ImageSize size, ObjectFormats objects)
    : m_output(output), m_eTo(eTo), m_nOutputBytes(FileBytes(eTo, size))
{
    if (eAccess == Access::Memory) {
        ZBT_IMAGE_ON_MEMORY pair = {};
        if (pInput) {
            const std::int64_t nBytes = PictureBytes(pInput->Facts());
            m_pInputBlock = MakeBlock(pInput->Path(), nBytes);
            pInput->ReadWhole(m_pInputBlock.get(), static_cast<std::size_t>(nBytes));
        }
        m_pOutputBlock = MakeBlock(output.Path(), m_nOutputBytes);
        pair.hInImage = m_pInputBlock.get();
        pair.hOutImage = m_pOutputBlock.get();
        Describe(pair, pInput, size, objects);
        return;
    }
    ZBT_IMAGE_IN_FILE pair = {};
    if (pInput)
        pair.hInImage = pInput->Handle();
    pair.hOutImage = output.Handle();
    Describe(pair, pInput, size, objects);
    if (eAccess == Access::Mmap)
        m_inputInf.eAcsType = m_outputInf.eAcsType = ACS_MMF;
}

template <class Pair>
void ExternalPair::Describe(Pair& pair, const InputFile* pInput, ImageSize size, ObjectFormats objects)
{
    if (pInput) {
        pair.nInType = static_cast<short>(pInput->Facts().eFormat);
        pair.nInOffset = static_cast<int>(pInput->Facts().nOffset);
        pair.nInWidth = size.nWidth;
        pair.nInHeight = size.nHeight;
    }
    pair.nOutType = static_cast<short>(m_eTo);
    pair.nOutWidth = size.nWidth;
    pair.nOutHeight = size.nHeight;
    CreateParam(&pair, objects.nInput, objects.nOutput, &m_inputInf, &m_outputInf);
}

void ExternalPair::DeliverOutput()
{
    if (m_pOutputBlock)
        m_output.Append(m_pOutputBlock.get(), static_cast<std::size_t>(m_nOutputBytes));
}
