// The output files of a compile, written beside their final names and put
// in place all at once.
//
// Each file's text goes to a temporary `.{name}.XXXXXX` created afresh in
// the same directory, and is moved over the final name by rename() only
// when the whole compile has succeeded. So a reader never sees half a file,
// a failed or interrupted compile leaves the earlier outputs as they were,
// and a symbolic link of an output's name is replaced, never written
// through. Failures go back as errno values: the caller words the report.
#pragma once

#include <vector>

#include "foundation/mstring.h"

class IOutStream;
struct TempNode;

class OutFile {
public:
    explicit OutFile(mstring const& path) : m_path(path) {}
    // Removes the temporary unless it was moved over the final name.
    ~OutFile();
    OutFile(OutFile const&) = delete;
    OutFile& operator=(OutFile const&) = delete;

    // Creates the temporary, never through a link, and gives a stream that
    // writes it; deleting the stream closes the file. 0, or the errno why
    // there is none: the final name is a directory or cannot be a file
    // name there, or the directory cannot take a new file.
    int open(IOutStream*& stream);
    // The first error of writing, flushing or closing the file, or 0.
    int error() const { return m_error; }
    // Moves the temporary over the final name; 0 or errno. The stream must
    // be closed.
    int commit();
    // Removes the temporary, if there is one.
    void discard();
    mstring const& path() const { return m_path; }

    // Whether `a` and `b` name the same file: the same name in the same
    // directory (whether or not it exists), or one file by device and
    // inode, links followed.
    static bool sameFile(mstring const& a, mstring const& b);

private:
    friend class OutFileStream;
    void closed(int error);

    mstring m_path;
    TempNode* m_temp = nullptr;  // the temporary's path, while it exists
    bool m_open = false;         // its stream has not been closed yet
    int m_error = 0;
};

// Every output file of one compile, in the order opened.
class OutFileSet {
public:
    OutFileSet() = default;
    ~OutFileSet() { discard(); }
    OutFileSet(OutFileSet const&) = delete;
    OutFileSet& operator=(OutFileSet const&) = delete;

    // A new output file `path` and its stream; null, with errno in `error`,
    // when it cannot be created.
    IOutStream* open(mstring const& path, int& error);
    // The first file that failed to be written, and why; 0 when none did.
    int firstError(mstring& path) const;
    // Moves every file over its final name, with SIGINT and SIGTERM held
    // back so that an interrupt never leaves old and new outputs mixed.
    // Stops at the first failure, whose file and errno it gives.
    int commit(mstring& path);
    // Removes every temporary not moved yet.
    void discard();

private:
    std::vector<OutFile*> v_files;
};

// While one lives, SIGINT and SIGTERM, where they have their default
// action, first remove the temporaries of every output file not yet moved
// or removed, then end the process as the signal would. The previous
// actions come back when the last one ends.
class InterruptCleanup {
public:
    InterruptCleanup();
    ~InterruptCleanup();
    InterruptCleanup(InterruptCleanup const&) = delete;
    InterruptCleanup& operator=(InterruptCleanup const&) = delete;
};
