// The one table of the library's Japanese texts: readable here, code page 932 in memory.
// A text with a character that Cp932.h does not know yet does not compile; add the character there.

#include "MemoryManager/ReportTexts.h"

#include "MemoryManager/Cp932.h"

namespace {

// clang-format off
constexpr auto kDiskForCaller = cp932::Text(u8"呼び出し側が利用できるバイト数="); // bytes available to the caller
constexpr auto kDiskTotal     = cp932::Text(u8"ディスク全体のバイト数=");         // bytes of the whole disk
constexpr auto kDiskFree      = cp932::Text(u8"ディスク全体の空きバイト数=");     // free bytes of the whole disk
constexpr auto kImport        = cp932::Text(u8"入力ファイル object 変換処理");    // input file to object conversion
constexpr auto kExport        = cp932::Text(u8"object 出力ファイル変換処理");     // object to output file conversion
// clang-format on

} // namespace

const char* const kTextDiskForCaller = kDiskForCaller.data();
const char* const kTextDiskTotal = kDiskTotal.data();
const char* const kTextDiskFree = kDiskFree.data();
const char* const kTextImport = kImport.data();
const char* const kTextExport = kExport.data();
