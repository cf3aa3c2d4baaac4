// The recursive lock, the interlocked exchange, thread numbers, clocks and pauses.
// All times are those of the monotonic clock, which setting the system's time does not change.

#include "Platform/posix/PosixLayer.h"

#include <ctime>
#include <unistd.h>

namespace {

timespec Now()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

} // namespace

void InitializeCriticalSection(CRITICAL_SECTION* pSection)
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&pSection->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void EnterCriticalSection(CRITICAL_SECTION* pSection)
{
    pthread_mutex_lock(&pSection->mutex);
}

void LeaveCriticalSection(CRITICAL_SECTION* pSection)
{
    pthread_mutex_unlock(&pSection->mutex);
}

void DeleteCriticalSection(CRITICAL_SECTION* pSection)
{
    pthread_mutex_destroy(&pSection->mutex);
}

LONG InterlockedCompareExchange(volatile LONG* pnTarget, LONG nExchange, LONG nComparand)
{
    __atomic_compare_exchange_n(pnTarget, &nComparand, nExchange, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return nComparand; // now the value that *pnTarget had, whether it was exchanged or not
}

DWORD GetCurrentThreadId()
{
    return static_cast<DWORD>(gettid());
}

DWORD GetTickCount()
{
    const timespec now = Now();
    return static_cast<DWORD>(static_cast<ULONGLONG>(now.tv_sec) * 1000 +
                              static_cast<ULONGLONG>(now.tv_nsec) / 1000000);
}

void Sleep(DWORD nMilliseconds)
{
    // The pause has a fixed end: one that started anew after every signal would last too long, and one that
    // ended with the first signal would be too short.
    timespec until = Now();
    until.tv_sec += static_cast<time_t>(nMilliseconds / 1000);
    until.tv_nsec += static_cast<int>(nMilliseconds % 1000) * 1000000;
    if (until.tv_nsec >= 1000000000) {
        until.tv_nsec -= 1000000000;
        ++until.tv_sec;
    }
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* pnCount)
{
    const timespec now = Now();
    pnCount->QuadPart = static_cast<LONGLONG>(now.tv_sec) * 1000000000 + now.tv_nsec;
    return 1;
}
