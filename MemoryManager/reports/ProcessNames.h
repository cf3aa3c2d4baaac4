#pragma once
// The names of process identifiers, which tell a processing step and the function that runs it.
//
// Internal. The names are constants of code page 932.

/// Bytes that hold every name with its terminator.
inline constexpr int kProcessNameSize = 43;

/// The name of the most specific field of an identifier that is known: its step, else its category, else its
/// function. Never null: kTextNoId when none is known.
const char* FindProcessName(int nIpNo);
