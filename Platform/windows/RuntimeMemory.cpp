// What the C++ run-time library in the DLL keeps for exceptions thrown while memory is short: without this it
// stays behind, 73 KB each time the DLL is unloaded.

#if !defined(MM_STATIC) // a program keeps its own to its end

namespace __gnu_cxx {
void __freeres(); // of libstdc++, for memory checkers; no header declares it
}

namespace {

struct RuntimeMemory
{
    ~RuntimeMemory() { __gnu_cxx::__freeres(); }
};

// Made first, so that it goes last.
[[gnu::init_priority(101)]] RuntimeMemory g_runtimeMemory;

} // namespace

#endif
