#include "target/zylcomp/ledger.h"

#include <cstdlib>

#include "zylcomp.h"

namespace {

__attribute__((tls_model("initial-exec"))) thread_local std::vector<void*>* t_ledger = nullptr;

void* noted(void* block) {
    if (block != nullptr && t_ledger != nullptr)
        t_ledger->push_back(block);
    return block;
}

}  // namespace

// Stand-ins for the runtime's allocators, so that the library works alone.
// Weak, so that a runtime loaded beside it takes their place.
extern "C" __attribute__((weak)) void* zyl_sys_malloc(size_t size) { return noted(std::malloc(size)); }
extern "C" __attribute__((weak)) void* zyl_sys_calloc(size_t count, size_t size) {
    return noted(std::calloc(count, size));
}

Ledger::Ledger() : m_previous(t_ledger) { t_ledger = &m_blocks; }

Ledger::~Ledger() { t_ledger = m_previous; }

void Ledger::freeAll() {
    for (void* block : m_blocks)
        std::free(block);
    m_blocks.clear();
}

LedgerPause::LedgerPause() : m_paused(t_ledger) { t_ledger = nullptr; }

LedgerPause::~LedgerPause() { t_ledger = m_paused; }
