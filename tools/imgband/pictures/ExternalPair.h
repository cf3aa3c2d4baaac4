#pragma once
// The external pictures of one run as the library is told of them.

#include "pictures/InputFile.h"
#include "pictures/OutputFile.h"
#include "values/RunSettings.h"

#include <cstdlib>
#include <memory>

/// Object formats on the two sides of a run: what the import makes, and what the export is given.
struct ObjectFormats
{
    int nInput;
    int nOutput;
};

/// Describes input and output to the library. With memory access it holds both pictures in blocks of its own,
/// which is memory beside the budget.
class ExternalPair
{
public:
    struct FreeBlock
    {
        void operator()(unsigned char* pBlock) const { std::free(pBlock); }
    };
    using Block = std::unique_ptr<unsigned char[], FreeBlock>;

    /// @param pInput   null when nothing is read
    /// @param pOutput  null while a run is only planned: then there are no blocks either
    /// @param size     of the output
    ExternalPair(Access eAccess, const InputFile* pInput, OutputFile* pOutput, Format eTo, ImageSize size,
                 ObjectFormats objects);

    T_ImgInf& Input() { return m_inputInf; }
    T_ImgInf& Output() { return m_outputInf; }

    /// Writes the output's block to the file; nothing to do for the other access types.
    void DeliverOutput();

private:
    void MakeBlocks(const InputFile* pInput);
    template <class Pair>
    void Describe(Pair& pair, const InputFile* pInput, ImageSize size, ObjectFormats objects);

    OutputFile* m_pOutput;
    Format m_eTo;
    Block m_pInputBlock;
    Block m_pOutputBlock;
    std::int64_t m_nOutputBytes;
    T_ImgInf m_inputInf = {};
    T_ImgInf m_outputInf = {};
};
