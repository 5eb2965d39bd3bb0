#include "foundation/outstream.h"

#include <unistd.h>

#include <cerrno>

#include "foundation/ut.h"
#include "frontend/diagnostics.h"

IOutStream& IOutStream::write(char const* s, size_t n) {
    mstring text;
    text.set(s, n);
    return *this << text;
}

IOutStream& ZylOFstream::write(char const* s, size_t n) {
    if (m_file && n > 0 && std::fwrite(s, 1, n, m_file) != n)
        failed();
    return *this;
}

IOutStream& ZylOFstream::operator<<(mstring const& s) {
    if (m_file && s.ptr() && std::fputs(s.ptr(), m_file) == EOF)
        failed();
    return *this;
}

IOutStream& ZylOFstream::operator<<(char const* s) {
    if (m_file && s && std::fputs(s, m_file) == EOF)
        failed();
    return *this;
}

// Numbers are formatted here and written by fputs, with the text that
// fprintf's "%ld", "%lu" and "%lld" would give.
IOutStream& ZylOFstream::operator<<(long v) {
    char buf[24];
    if (m_file && std::fputs(UT::decimal(static_cast<long long>(v), buf), m_file) == EOF)
        failed();
    return *this;
}

IOutStream& ZylOFstream::operator<<(unsigned long v) {
    char buf[24];
    if (m_file && std::fputs(UT::decimal(static_cast<unsigned long long>(v), buf), m_file) == EOF)
        failed();
    return *this;
}

IOutStream& ZylOFstream::operator<<(char c) {
    if (m_file && std::fputc(c, m_file) == EOF)
        failed();
    return *this;
}

IOutStream& ZylOFstream::operator<<(long long v) {
    char buf[24];
    if (m_file && std::fputs(UT::decimal(v, buf), m_file) == EOF)
        failed();
    return *this;
}

void ZylOFstream::failed() {
    if (m_error == 0)
        m_error = errno != 0 ? errno : EIO;
}

int ZylOFstream::finish() {
    if (m_file) {
        if (std::fflush(m_file) != 0)
            failed();
        if (std::ferror(m_file) && m_error == 0)
            m_error = EIO;
        if (std::fclose(m_file) != 0)
            failed();
        m_file = nullptr;
    }
    delete[] m_buffer;
    m_buffer = nullptr;
    return m_error;
}

void ZylOFstream::setBuffer(size_t size) {
    if (m_file == nullptr || m_buffer != nullptr)
        return;
    m_buffer = new char[size];
    if (std::setvbuf(m_file, m_buffer, _IOFBF, size) != 0) {
        delete[] m_buffer;
        m_buffer = nullptr;
    }
}

std::atomic<unsigned> ZylOstringstream::cnt{0};

ZylOstringstream::~ZylOstringstream() {
    m_stream.close();
    ::unlink(m_fileName.c_str());
}

mstring ZylOstringstream::retstr() {
    m_stream.close();
    mstring result;
    FILE* f = std::fopen(m_fileName.c_str(), "rb");
    if (f == nullptr)
        return result;
    char piece[1025];
    for (;;) {
        size_t n = std::fread(piece, 1, 1024, f);
        piece[n] = '\0';
        // A NUL in the file cuts the piece where it stands.
        result += piece;
        if (n < 1024)
            break;
    }
    std::fclose(f);
    return result;
}

void MemOstringstream::append(char const* s, size_t n) {
    if (m_ended || n == 0)
        return;
    if (v_block.empty() || v_block.back().size() + n > v_block.back().capacity()) {
        v_block.emplace_back();
        v_block.back().reserve(n > kBlock ? n : kBlock);
    }
    v_block.back().append(s, n);
}

IOutStream& MemOstringstream::operator<<(mstring const& s) {
    append(s.ptr());
    return *this;
}

IOutStream& MemOstringstream::operator<<(char const* s) {
    append(s);
    return *this;
}

IOutStream& MemOstringstream::operator<<(long v) {
    char buf[24];
    append(UT::decimal(static_cast<long long>(v), buf));
    return *this;
}

IOutStream& MemOstringstream::operator<<(unsigned long v) {
    char buf[24];
    append(UT::decimal(static_cast<unsigned long long>(v), buf));
    return *this;
}

IOutStream& MemOstringstream::operator<<(char c) {
    // A NUL is an empty C string: it adds nothing.
    if (c != '\0')
        append(&c, 1);
    return *this;
}

IOutStream& MemOstringstream::operator<<(long long v) {
    char buf[24];
    append(UT::decimal(v, buf));
    return *this;
}

IOutStream& MemOstringstream::write(char const* s, size_t n) {
    append(s, n);
    return *this;
}

void MemOstringstream::moveTextTo(IOutStream& target) {
    m_ended = true;
    // No NUL ever enters the text (every piece is a C string), so the
    // whole of it is what retstr() would give. Each block goes as soon as
    // it is written.
    for (std::string& block : v_block) {
        target.write(block.data(), block.size());
        std::string().swap(block);
    }
    v_block.clear();
}

mstring MemOstringstream::retstr() {
    m_ended = true;
    std::string text;
    for (std::string const& block : v_block)
        text += block;
    return mstring(text.c_str());
}

DupStream::~DupStream() {
    if (m_owner) {
        delete m_first;
        delete m_second;
    }
}

IOutStream* IOutStream::createNullStream() { return new NullStream(); }

IOutStream* IOutStream::createWrapStream(IOutStream* target) { return new WrapStream(target); }

IOutStream* IOutStream::createDupStream(IOutStream* first, IOutStream* second, bool owner) {
    return new DupStream(first, second, owner);
}

IOutStream* IOutStream::createFileStream(mstring const& name) {
    FILE* f = std::fopen(name.c_str(), "w");
    if (f == nullptr)
        IErrReporter::panic(mstring("Cannot open file ") + name, true);
    // Generated files run to hundreds of megabytes: a large buffer writes
    // them in a few hundred system calls instead of one per 4 KiB.
    ZylOFstream* stream = new ZylOFstream(f);
    stream->setBuffer(1 << 20);
    return stream;
}

IOutStream* IOutStream::createStrStream(mstring const& dir) {
    unsigned const n = ++ZylOstringstream::cnt;
    // The directory is used as it stands: an empty one puts the file in the root.
    mstring name = dir + OS_SEP + "temp_" + UT::n2s(static_cast<int>(::getpid())) + "_" + UT::n2s(n);
    FILE* f = std::fopen(name.c_str(), "wb");
    if (f == nullptr)
        IErrReporter::panic(mstring("Cannot open file ") + name, true);
    return new ZylOstringstream(name, f);
}

IOutStream* IOutStream::createMemStream() { return new MemOstringstream(); }
