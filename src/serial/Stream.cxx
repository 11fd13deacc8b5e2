#include "Stream.h"

#include <fcntl.h>

#include <climits>
#include <cstdint>

qnStream::~qnStream() {}

const char* stdioType(qnStream::qnStreamType type) {
    switch (static_cast<int>(type)) {
        case qnStream::Read: return "r";
        case qnStream::Write: return "w";
        case qnStream::ReadWrite: return "r+";
        default: return nullptr;
    }
}

namespace {

// One thread uses a stream, so no call need lock the file.
#if defined(__GLIBC__)
std::size_t readUnlocked(void* buffer, std::size_t size, std::size_t count, std::FILE* file) {
    return fread_unlocked(buffer, size, count, file);
}
std::size_t writeUnlocked(const void* buffer, std::size_t size, std::size_t count, std::FILE* file) {
    return fwrite_unlocked(buffer, size, count, file);
}
#else
std::size_t readUnlocked(void* buffer, std::size_t size, std::size_t count, std::FILE* file) {
    return std::fread(buffer, size, count, file);
}
std::size_t writeUnlocked(const void* buffer, std::size_t size, std::size_t count, std::FILE* file) {
    return std::fwrite(buffer, size, count, file);
}
#endif

int openFlags(qnStream::qnStreamType type) {
    switch (static_cast<int>(type)) {
        case qnStream::Write: return O_WRONLY;
        case qnStream::ReadWrite: return O_RDWR;
        default: return O_RDONLY;
    }
}

/** Opens the file, creating a missing one unless it is to be read. It is never emptied. */
int openFile(const char* path, qnStream::qnStreamType type, unsigned permissions) {
    if (path == nullptr) return -1;
    int flags = openFlags(type);
    int fd = ::open(path, flags);
    if (fd < 0 && type != qnStream::Read) fd = ::open(path, flags | O_CREAT, static_cast<mode_t>(permissions));
    return fd;
}

std::FILE* openDescriptor(int fd, qnStream::qnStreamType type) {
    const char* mode = stdioType(type);
    return mode == nullptr ? nullptr : ::fdopen(fd, mode);
}

// Longs take four bytes in a stream. Where they are wider they are converted in portions.
constexpr bool WideLongs = sizeof(long) > 4;
constexpr unsigned Portion = 256;

bool fits(long value) { return value >= INT32_MIN && value <= INT32_MAX; }

}  // namespace

qnStdioStream::qnStdioStream(const char* path, qnStreamType direction, unsigned permissions)
    : file(nullptr), type(direction), error(1), eof(0) {
    int fd = openFile(path, direction, permissions);
    if (fd < 0) return;
    // Deliberate: a descriptor for which there is no file stays open.
    file = openDescriptor(fd, direction);
    error = file == nullptr;
}

qnStdioStream::qnStdioStream(int fd, qnStreamType direction)
    : file(openDescriptor(fd, direction)), type(direction), error(file == nullptr), eof(0) {}

qnStdioStream::qnStdioStream(std::FILE* adopted, qnStreamType direction)
    : file(adopted), type(direction), error(adopted == nullptr), eof(0) {}

qnStdioStream::~qnStdioStream() {
    if (file == nullptr) return;
    std::fflush(file);
    std::fclose(file);
}

bool qnStdioStream::hasError() { return error; }

bool qnStdioStream::atEOF() { return eof; }

bool qnStdioStream::isReading() { return type == Read || type == ReadWrite; }

bool qnStdioStream::isWriting() { return type == Write || type == ReadWrite; }

qnStream::qnStreamType qnStdioStream::getType() { return type; }

bool qnStdioStream::getBlock(void* buffer, unsigned size, unsigned count) {
    return file != nullptr && (count == 0 || readUnlocked(buffer, size, count, file) == count);
}

bool qnStdioStream::putBlock(const void* buffer, unsigned size, unsigned count) {
    return file != nullptr && (count == 0 || writeUnlocked(buffer, size, count, file) == count);
}

bool qnStdioStream::getBytes(char* buffer, unsigned count) {
    if (count != 1 || file == nullptr) return getBlock(buffer, 1, count);
    int c = getc_unlocked(file);
    if (c == EOF) return false;
    *buffer = static_cast<char>(c);
    return true;
}

bool qnStdioStream::getShorts(short* buffer, unsigned count) { return getBlock(buffer, 2, count); }

bool qnStdioStream::getInts(int* buffer, unsigned count) { return getBlock(buffer, 4, count); }

bool qnStdioStream::getLongs(long* buffer, unsigned count) {
    if (!WideLongs) return getBlock(buffer, 4, count);
    std::int32_t values[Portion];
    while (count > 0) {
        unsigned n = count < Portion ? count : Portion;
        if (!getBlock(values, 4, n)) return false;
        for (unsigned i = 0; i < n; ++i) buffer[i] = values[i];
        buffer += n;
        count -= n;
    }
    return file != nullptr;
}

bool qnStdioStream::getFloats(float* buffer, unsigned count) { return getBlock(buffer, 4, count); }

bool qnStdioStream::getDoubles(double* buffer, unsigned count) { return getBlock(buffer, 8, count); }

bool qnStdioStream::putBytes(const char* buffer, unsigned count) {
    if (count != 1 || file == nullptr) return putBlock(buffer, 1, count);
    return putc_unlocked(static_cast<unsigned char>(*buffer), file) != EOF;
}

bool qnStdioStream::putShorts(const short* buffer, unsigned count) { return putBlock(buffer, 2, count); }

bool qnStdioStream::putInts(const int* buffer, unsigned count) { return putBlock(buffer, 4, count); }

bool qnStdioStream::putLongs(const long* buffer, unsigned count) {
    if (!WideLongs) return putBlock(buffer, 4, count);
    for (unsigned i = 0; i < count; ++i) {
        if (!fits(buffer[i])) return false;
    }
    std::int32_t values[Portion];
    while (count > 0) {
        unsigned n = count < Portion ? count : Portion;
        for (unsigned i = 0; i < n; ++i) values[i] = static_cast<std::int32_t>(buffer[i]);
        if (!putBlock(values, 4, n)) return false;
        buffer += n;
        count -= n;
    }
    return file != nullptr;
}

bool qnStdioStream::putFloats(const float* buffer, unsigned count) { return putBlock(buffer, 4, count); }

bool qnStdioStream::putDoubles(const double* buffer, unsigned count) { return putBlock(buffer, 8, count); }
