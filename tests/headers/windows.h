#pragma once
// The system's types, as wide as the system's own, and how a host loads a DLL. A host never looks inside the
// lock.

typedef unsigned char BYTE;
typedef int BOOL;
typedef long LONG;
typedef unsigned long DWORD;
typedef void* HANDLE;
typedef decltype(sizeof(0)) SIZE_T;
typedef struct HINSTANCE__* HMODULE;
typedef SIZE_T(__stdcall* FARPROC)();

typedef struct _RTL_CRITICAL_SECTION
{
    void* p[3];
    LONG n[2];
    SIZE_T nSpinCount;
} CRITICAL_SECTION;

extern "C" {
__declspec(dllimport) HMODULE __stdcall LoadLibraryA(const char* pszFile);
__declspec(dllimport) FARPROC __stdcall GetProcAddress(HMODULE hModule, const char* pszName);
__declspec(dllimport) BOOL __stdcall FreeLibrary(HMODULE hModule);
}
