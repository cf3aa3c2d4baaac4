// Filling the library's parameter records from files or blocks.

#include "pictures/ExternalPair.h"

#include "values/Failure.h"

#include <fmt/format.h>

#include <cstdlib>

namespace {

/// A block of zeros, so that the padding of the output's lines is zero. What is never touched takes no
/// memory.
ExternalPair::Block MakeBlock(const std::string& szPath, std::int64_t nBytes)
{
    ExternalPair::Block pBlock(static_cast<unsigned char*>(std::calloc(static_cast<std::size_t>(nBytes), 1)));
    if (!pBlock)
        throw Failure(ExitStatus::JobFailed, szPath,
                      fmt::format("there is no memory for a picture of {} bytes", nBytes), "--access file");
    return pBlock;
}

} // namespace

ExternalPair::ExternalPair(Access eAccess, const InputFile* pInput, OutputFile* pOutput, Format eTo,
                           ImageSize size, ObjectFormats objects)
    : m_pOutput(pOutput), m_eTo(eTo), m_blocks(Needs(eAccess, pInput, eTo, size))
{
    if (eAccess == Access::Memory) {
        MakeBlocks(pInput);
        ZBT_IMAGE_ON_MEMORY pair = {};
        pair.hInImage = m_pInputBlock.get();
        pair.hOutImage = m_pOutputBlock.get();
        Describe(pair, pInput, size, objects);
        return;
    }
    ZBT_IMAGE_IN_FILE pair = {};
    if (pInput)
        pair.hInImage = pInput->Handle();
    if (pOutput)
        pair.hOutImage = pOutput->Handle();
    Describe(pair, pInput, size, objects);
    if (eAccess == Access::Mmap)
        m_inputInf.eAcsType = m_outputInf.eAcsType = ACS_MMF;
}

BlockBytes ExternalPair::Needs(Access eAccess, const InputFile* pInput, Format eTo, ImageSize size)
{
    if (eAccess != Access::Memory)
        return {};
    return {pInput ? pInput->PictureEnd() : 0, FileBytes(eTo, size)};
}

void ExternalPair::MakeBlocks(const InputFile* pInput)
{
    if (!m_pOutput)
        return;
    if (pInput) {
        m_pInputBlock = MakeBlock(pInput->Path(), m_blocks.nInput);
        pInput->ReadWhole(m_pInputBlock.get(), static_cast<std::size_t>(m_blocks.nInput));
    }
    m_pOutputBlock = MakeBlock(m_pOutput->Path(), m_blocks.nOutput);
}

template <class Pair>
void ExternalPair::Describe(Pair& pair, const InputFile* pInput, ImageSize size, ObjectFormats objects)
{
    if (pInput) {
        pair.nInType = static_cast<short>(pInput->Facts().eFormat);
        pair.nInOffset = static_cast<int>(pInput->Facts().nOffset);
        pair.nInWidth = pInput->Facts().size.nWidth;
        pair.nInHeight = pInput->Facts().size.nHeight;
    }
    pair.nOutType = static_cast<short>(m_eTo);
    pair.nOutWidth = size.nWidth;
    pair.nOutHeight = size.nHeight;
    CreateParam(&pair, objects.nInput, objects.nOutput, &m_inputInf, &m_outputInf);
}

void ExternalPair::DeliverOutput()
{
    if (m_pOutputBlock)
        m_pOutput->Append(m_pOutputBlock.get(), static_cast<std::size_t>(m_blocks.nOutput));
}
