#pragma once
// The whole interface of the library.

#include "MemoryManager/BaseBuffer.h"
#include "MemoryManager/CImageCtrl.h"
#include "MemoryManager/CImageCtrlIO.h"
#include "MemoryManager/CImageObj.h"
#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/CWorkTableList.h"
#include "MemoryManager/ImgObjUty.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/Version.h"
