#!/usr/bin/env bash
# The shared library exports the documented interface and nothing else. Usage: scripts/check-exports.sh LIBRARY
set -euo pipefail

exported=$(nm -D --defined-only -C "$1" | sed -E 's/^[0-9a-f]+ . //')
# Classes of the interface with their tables, and the free functions. Nothing of the platform layer, no helper.
allowed='^((vtable|typeinfo|typeinfo name) for )?(CImage(Obj|ObjIO|Ctrl|CtrlIO)|CWorkTableList)(::.*)?$'
allowed+='|^(ImportImg(ForUnit(Judge|EnLarge)?)?|DuplicateImageForUnit|ExportImg|CreateParam|SetErrLogPath|GetErrLogPath|GetImageObjMemState|BaseMalloc(Init|Main|Free))\('
if surplus=$(grep -vE "$allowed" <<<"$exported"); then
    printf 'Exported but not part of the interface:\n%s\n' "$surplus" >&2
    exit 1
fi
for name in 'CImageObj::MemoryAlloc(' 'CImageObj::MapBandRange(' 'CImageObj::m_g_cs' 'CImageCtrl::CleanTempFolder(' \
    'CImageCtrl::ms_TempDirctoryName' \
    'CImageObjIO::GetImageInfoIO(' 'CImageObjIO::SetAlpha(' 'CImageCtrlIO::SetHederSize(' \
    'CImageCtrlIO::GetTempBuf(' 'CImageCtrlIO::GetTMPBuf(' 'CImageCtrlIO::SetFileHandle(' 'CImageCtrlIO::SetFileSize(' \
    'CImageCtrlIO::GetFHandle(' 'CImageCtrlIO::SetImageData(' 'CImageCtrl::GetMemPtr(' 'CImageObj::AskFreeMemory(' \
    'ImportImg(' 'ExportImg(' 'ImportImgForUnit(' 'ImportImgForUnitJudge(' 'ImportImgForUnitEnLarge(' \
    'DuplicateImageForUnit(' 'CImageObj::MapBlock(' 'CImageObj::UnMapBlock(' 'CImageObj::CalcOffsetLength(' \
    'CWorkTableList::KeyReadInt(' 'CWorkTableList::FlushData(' 'CWorkTableList::AllocWorkTable(' \
    'CImageObj::AllocWorkMem(' 'CImageObj::ReleaseWorkMem(' 'CImageObj::GetIpName(' 'CImageObj::UseMemoryListImg(' \
    'CImageObj::UseMemoryListMax(' 'CImageObj::ThreadList(' 'CImageObj::MapList(' 'CImageObj::DbgCImgLogInit(' \
    'CImageObj::DbgCImgLogEnd(' 'CImageObj::ms_WorkList' 'CImageObj::ms_ThreadListCount' 'CImageObj::ms_MapListCount' \
    'CImageObj::DebugConvertT_Image(' 'CImageObj::DebugConvertCImageObj(' 'CImageCtrl::DebugConvertWrite(' \
    'CImageObj::OutPutBmp(' 'CImageObj::Output(' 'BaseMallocInit(' 'BaseMallocMain(' 'BaseMallocFree(' \
    'SetErrLogPath(' 'GetErrLogPath(' 'GetImageObjMemState(' 'CreateParam('; do
    grep -qF "$name" <<<"$exported" || { echo "Not exported: $name" >&2; exit 1; }
done
echo "$(wc -l <<<"$exported") exported names, all of the interface"
