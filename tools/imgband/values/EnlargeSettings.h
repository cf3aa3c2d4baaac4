#pragma once
// How a picture is enlarged.

enum class EnlargeOp
{
    Nearest, ///< every pixel becomes factor x factor equal ones
    Linear,  ///< between pixel centres: (x + 0.5) / factor - 0.5, edges replicated, rounded once, halves up
};

struct EnlargeSettings
{
    EnlargeOp eOp = EnlargeOp::Linear;
    int nFactor = 1; ///< at least 1
};
