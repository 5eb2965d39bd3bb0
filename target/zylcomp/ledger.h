// The dictionary memory of the call under way, when the library's own
// allocators hand it out: a refused call frees what it had allocated, since
// nothing points to it and the caller never saw it. A runtime that brings
// its own zyl_sys_malloc and zyl_sys_calloc never reaches the library's, so
// its blocks stay its own, as they always were.
#pragma once

#include <vector>

// One call's ledger, current on its thread while it lives. A report
// function that loads another dictionary gets its own.
class Ledger {
public:
    Ledger();
    ~Ledger();
    Ledger(Ledger const&) = delete;
    Ledger& operator=(Ledger const&) = delete;

    // The dictionary is the caller's now.
    void keep() { m_blocks.clear(); }
    // Frees every block noted since the ledger was made or last kept.
    void freeAll();

private:
    std::vector<void*> m_blocks;
    std::vector<void*>* m_previous;
};

// While it lives, nothing is noted on this thread: the caller's report
// function may allocate blocks of its own that it keeps.
class LedgerPause {
public:
    LedgerPause();
    ~LedgerPause();
    LedgerPause(LedgerPause const&) = delete;
    LedgerPause& operator=(LedgerPause const&) = delete;

private:
    std::vector<void*>* m_paused;
};
