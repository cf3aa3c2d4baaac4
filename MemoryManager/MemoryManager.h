#pragma once
// Includes the whole interface of the library, but for the list of report texts (ReportTextList.h).

#include "MemoryManager/BaseBuffer.h"
#include "MemoryManager/CImageCtrl.h"
#include "MemoryManager/CImageCtrlIO.h"
#include "MemoryManager/CImageObj.h"
#include "MemoryManager/CImageObjIO.h"
#include "MemoryManager/CWorkTableList.h"
#include "MemoryManager/ImgObjUty.h"
#include "MemoryManager/ResultCodes.h"
#include "MemoryManager/Version.h"
