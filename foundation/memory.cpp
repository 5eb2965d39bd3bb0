// The process-wide allocation functions. Exhausted memory is never a
// returned error anywhere in the compiler: it ends the process here.
#include <cstdlib>
#include <new>

#include "frontend/diagnostics.h"

void* operator new(std::size_t size) {
    void* p = std::malloc(size);
    if (p == nullptr && size != 0)
        IErrReporter::panic("insufficient memory new", true);
    return p;
}

void* operator new[](std::size_t size) {
    void* p = std::malloc(size);
    if (p == nullptr && size != 0)
        IErrReporter::panic("insufficient memory new[]", true);
    return p;
}

void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
