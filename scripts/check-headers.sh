#!/usr/bin/env bash
# Every public header compiles alone, with every compiler, as C++17 and C++20, without warnings.
set -euo pipefail
cd "$(dirname "$0")/.."

public=(MemoryManager BaseBuffer CImageCtrl CImageCtrlIO CImageObj CImageObjIO CWorkTableList ImgObjUty ReportTextList ResultCodes ImageRecord
    ExternalImage MemoryRequest LogStack ParameterRecords)
for compiler in g++ "g++ -m32" clang++ i686-w64-mingw32-g++-posix x86_64-w64-mingw32-g++-posix; do
    for standard in c++17 c++20; do
        for header in "${public[@]}"; do
            echo "#include <MemoryManager/$header.h>" |
                $compiler -std=$standard -Wall -Wextra -Wconversion -Wshadow -Werror -I. -x c++ -fsyntax-only -
        done
    done
done
echo "${#public[@]} headers compile alone"
