#pragma once
// The names of process identifiers. An identifier tells a processing step, its category, and the function
// that runs it.
//
// Internal. The names are constant texts in code page 932. Any thread may ask for them.

/// Bytes of the longest name with its terminator.
inline constexpr int kProcessNameSize = 43;

/// The name of an identifier's step; if that is unknown, of its category, else of its function. kTextNoId
/// when none of them is known.
const char* FindProcessName(int nIpNo);
