// Output streams. Every generated text goes through IOutStream, and the
// stream kinds combine so that one generator statement can reach a header,
// a source file, both, or nothing.
#pragma once

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "foundation/mstring.h"

class IOutStream {
public:
    virtual ~IOutStream() = default;
    virtual IOutStream& operator<<(mstring const& s) = 0;
    virtual IOutStream& operator<<(char const* s) = 0;
    virtual IOutStream& operator<<(long v) = 0;
    virtual IOutStream& operator<<(unsigned long v) = 0;
    virtual IOutStream& operator<<(char c) = 0;
    virtual IOutStream& operator<<(long long v) = 0;
    virtual bool good() = 0;
    virtual mstring retstr() { return mstring(); }
    // `n` characters at `s`, none of them NUL: text whose length is known
    // already is not measured again.
    virtual IOutStream& write(char const* s, size_t n);
    IOutStream& write(std::string const& s) { return write(s.data(), s.size()); }
    // Ends writing as retstr() does and writes the collected text to
    // `target`, without making a copy of it where the stream can.
    virtual void moveTextTo(IOutStream& target) { target << retstr(); }

    // Plain ints and unsigneds would be ambiguous between the overloads above.
    IOutStream& operator<<(int v) { return *this << static_cast<long>(v); }
    IOutStream& operator<<(unsigned v) { return *this << static_cast<unsigned long>(v); }

    static IOutStream* createNullStream();
    static IOutStream* createWrapStream(IOutStream* target);
    static IOutStream* createDupStream(IOutStream* first, IOutStream* second, bool owner);
    // Ends the process when the file cannot be opened.
    static IOutStream* createFileStream(mstring const& name);
    static IOutStream* createStrStream(mstring const& dir);
    // A text collected in memory; retstr() gives it back.
    static IOutStream* createMemStream();
};

class ZylOFstream : public IOutStream {
public:
    explicit ZylOFstream(FILE* f) : m_file(f) {}
    ~ZylOFstream() override { close(); }
    IOutStream& operator<<(mstring const& s) override;
    IOutStream& operator<<(char const* s) override;
    IOutStream& operator<<(long v) override;
    IOutStream& operator<<(unsigned long v) override;
    IOutStream& operator<<(char c) override;
    IOutStream& operator<<(long long v) override;
    using IOutStream::operator<<;
    IOutStream& write(char const* s, size_t n) override;
    using IOutStream::write;
    bool good() override { return m_file != nullptr; }
    void close() { finish(); }
    // Closes the file and gives the first error of writing, flushing or
    // closing it (an errno value), or 0. Errors of stdio are sticky, so a
    // write that failed is known here even when its result went unseen.
    int finish();
    // Gives the file a write buffer of `size` bytes, which the stream owns.
    void setBuffer(size_t size);

private:
    // Keeps the errno of the first failure.
    void failed();

    FILE* m_file;
    char* m_buffer = nullptr;
    int m_error = 0;
};

// A text collected in a temporary file `temp_{pid}_{counter}` of a given
// directory, removed when the stream is destroyed.
class ZylOstringstream : public IOutStream {
public:
    ZylOstringstream(mstring const& fileName, FILE* f) : m_fileName(fileName), m_stream(f) {}
    ~ZylOstringstream() override;
    IOutStream& operator<<(mstring const& s) override { m_stream << s; return *this; }
    IOutStream& operator<<(char const* s) override { m_stream << s; return *this; }
    IOutStream& operator<<(long v) override { m_stream << v; return *this; }
    IOutStream& operator<<(unsigned long v) override { m_stream << v; return *this; }
    IOutStream& operator<<(char c) override { m_stream << c; return *this; }
    IOutStream& operator<<(long long v) override { m_stream << v; return *this; }
    using IOutStream::operator<<;
    IOutStream& write(char const* s, size_t n) override { m_stream.write(s, n); return *this; }
    using IOutStream::write;
    bool good() override { return true; }
    // Ends writing for good and reads the collected text back.
    mstring retstr() override;

    // Numbers the temporary files of the process: compiles on several
    // threads share one directory, so one counter serves them all.
    static std::atomic<unsigned> cnt;

private:
    mstring m_fileName;
    ZylOFstream m_stream;
};

// The same contract as ZylOstringstream without the temporary file: the
// text stays in memory, and writing ends with the first retstr().
class MemOstringstream : public IOutStream {
public:
    IOutStream& operator<<(mstring const& s) override;
    IOutStream& operator<<(char const* s) override;
    IOutStream& operator<<(long v) override;
    IOutStream& operator<<(unsigned long v) override;
    IOutStream& operator<<(char c) override;
    IOutStream& operator<<(long long v) override;
    using IOutStream::operator<<;
    IOutStream& write(char const* s, size_t n) override;
    using IOutStream::write;
    bool good() override { return true; }
    mstring retstr() override;
    // Hands the text over whole and lets its memory go; a later retstr()
    // gives an empty text.
    void moveTextTo(IOutStream& target) override;

private:
    void append(char const* s) {
        if (s != nullptr)
            append(s, std::strlen(s));
    }
    void append(char const* s, size_t n);

    // The text in blocks of about kBlock bytes, filled one after the other:
    // a text of tens of megabytes grows without being copied to ever larger
    // blocks, and is never held twice while it grows.
    static constexpr size_t kBlock = size_t{1} << 20;
    std::vector<std::string> v_block;
    bool m_ended = false;
};

class NullStream : public IOutStream {
public:
    IOutStream& operator<<(mstring const&) override { return *this; }
    IOutStream& operator<<(char const*) override { return *this; }
    IOutStream& operator<<(long) override { return *this; }
    IOutStream& operator<<(unsigned long) override { return *this; }
    IOutStream& operator<<(char) override { return *this; }
    IOutStream& operator<<(long long) override { return *this; }
    using IOutStream::operator<<;
    IOutStream& write(char const*, size_t) override { return *this; }
    using IOutStream::write;
    bool good() override { return true; }
};

// Forwards to a stream it does not own, so one file stream can be shared.
class WrapStream : public IOutStream {
public:
    explicit WrapStream(IOutStream* target) : m_target(target) {}
    IOutStream& operator<<(mstring const& s) override { *m_target << s; return *this; }
    IOutStream& operator<<(char const* s) override { *m_target << s; return *this; }
    IOutStream& operator<<(long v) override { *m_target << v; return *this; }
    IOutStream& operator<<(unsigned long v) override { *m_target << v; return *this; }
    IOutStream& operator<<(char c) override { *m_target << c; return *this; }
    IOutStream& operator<<(long long v) override { *m_target << v; return *this; }
    using IOutStream::operator<<;
    IOutStream& write(char const* s, size_t n) override { m_target->write(s, n); return *this; }
    using IOutStream::write;
    bool good() override { return m_target->good(); }

private:
    IOutStream* m_target;
};

class DupStream : public IOutStream {
public:
    DupStream(IOutStream* first, IOutStream* second, bool owner)
        : m_first(first), m_second(second), m_owner(owner) {}
    ~DupStream() override;
    IOutStream& operator<<(mstring const& s) override { *m_first << s; *m_second << s; return *this; }
    IOutStream& operator<<(char const* s) override { *m_first << s; *m_second << s; return *this; }
    IOutStream& operator<<(long v) override { *m_first << v; *m_second << v; return *this; }
    IOutStream& operator<<(unsigned long v) override { *m_first << v; *m_second << v; return *this; }
    IOutStream& operator<<(char c) override { *m_first << c; *m_second << c; return *this; }
    IOutStream& operator<<(long long v) override { *m_first << v; *m_second << v; return *this; }
    using IOutStream::operator<<;
    IOutStream& write(char const* s, size_t n) override {
        m_first->write(s, n);
        m_second->write(s, n);
        return *this;
    }
    using IOutStream::write;
    bool good() override { return m_first->good() && m_second->good(); }

private:
    IOutStream* m_first;
    IOutStream* m_second;
    bool m_owner;
};
