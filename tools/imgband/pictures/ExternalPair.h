#pragma once
// The external pictures of one run as the library is told of them.

#include "pictures/InputFile.h"
#include "pictures/OutputFile.h"
#include "values/RunSettings.h"

#include <cstdlib>
#include <memory>

/// Formats (MM_FORMAT_...) of the objects on the two sides of a run: what the import makes, and what the
/// export is given.
struct ObjectFormats
{
    int nInput;
    int nOutput;
};

/// Bytes of the blocks in which a run with memory access holds its pictures; else 0.
struct BlockBytes
{
    std::int64_t nInput = 0;
    std::int64_t nOutput = 0;

    std::int64_t Sum() const { return nInput + nOutput; }
};

/// Describes input and output to the library. With memory access it holds both pictures in blocks of its own,
/// for which the caller charges the budget. The files must outlive it, and it must outlive the library's use
/// of the descriptions.
class ExternalPair
{
public:
    struct FreeBlock
    {
        void operator()(unsigned char* pBlock) const { std::free(pBlock); }
    };
    using Block = std::unique_ptr<unsigned char[], FreeBlock>;

    /// What the blocks will take.
    /// @param pInput  null when nothing is read
    static BlockBytes Needs(Access eAccess, const InputFile* pInput, Format eTo, ImageSize size);

    /// Throws Failure when there is no memory for the blocks, or when the input cannot be read into its
    /// block.
    /// @param pInput   null when nothing is read
    /// @param pOutput  null while a run is only planned: then there are no blocks either
    /// @param eTo      the output's format
    /// @param size     of the output
    ExternalPair(Access eAccess, const InputFile* pInput, OutputFile* pOutput, Format eTo, ImageSize size,
                 ObjectFormats objects);

    /// The library's descriptions of both, which the library may change; the input's is zero when nothing is
    /// read.
    T_ImgInf& Input() { return m_inputInf; }
    T_ImgInf& Output() { return m_outputInf; }

    /// What the blocks take. That a run which is only planned has none makes no difference.
    const BlockBytes& Blocks() const { return m_blocks; }

    /// Writes the output's block to the file, where there is one. Throws Failure.
    void DeliverOutput();

private:
    void MakeBlocks(const InputFile* pInput);
    template <class Pair>
    void Describe(Pair& pair, const InputFile* pInput, ImageSize size, ObjectFormats objects);

    OutputFile* m_pOutput;
    Format m_eTo;
    Block m_pInputBlock;
    Block m_pOutputBlock;
    BlockBytes m_blocks;
    T_ImgInf m_inputInf = {};
    T_ImgInf m_outputInf = {};
};
