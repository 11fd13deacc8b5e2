#include "StateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

/** Holds a counted object for the length of a block. */
template <class Object>
class Held {
public:
    explicit Held(Object* object) : object_(object) { qnRetain(object_); }
    ~Held() { qnRelease(object_); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    Object* operator->() const { return object_; }
    Object* get() const { return object_; }

private:
    Object* object_;
};

/** Reads the counts in the file, or returns null. A stream that lies ends the process. */
std::unique_ptr<WordCounts> read(const char* path) {
    Held<qnStdioStream> stream(new qnStdioStream(path, qnStream::Read, 0));
    if (stream->hasError()) return nullptr;
    Held<qnTranscriber> reader(qnTranscriber::getReader(stream.get()));
    if (reader.get() == nullptr) return nullptr;
    void* root = reader->readObject(WordCounts_type);
    if (root == nullptr || root != WordCounts::lastInstance()) return nullptr;
    std::unique_ptr<WordCounts> counts(static_cast<WordCounts*>(root));
    char rest;
    return stream->getBytes(&rest, 1) ? nullptr : std::move(counts);
}

/** Everything that can be read from `fd`, without its last line end. */
qnStr readAll(int fd) {
    qnStr text;
    char buffer[256];
    for (;;) {
        ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        text.append(buffer, static_cast<unsigned>(n));
    }
    return text.trimRight("\n");
}

[[noreturn]] void tryInChild(const char* path, int messages) {
    ::dup2(messages, STDERR_FILENO);
    ::close(messages);
    _exit(read(path) != nullptr ? EXIT_SUCCESS : EXIT_FAILURE);
}

/**
 * Whether the file can be read to its end. The library ends the process over a stream that lies, with its reason on
 * standard error, so the first attempt is made in a child; `reason` receives what it said.
 */
bool isReadable(const char* path, qnStr& reason) {
    int ends[2];
    if (::pipe(ends) != 0) {
        reason = std::strerror(errno);
        return false;
    }
    pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        tryInChild(path, ends[1]);
    }
    ::close(ends[1]);
    if (child > 0) reason = readAll(ends[0]);
    ::close(ends[0]);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) {
        reason = std::strerror(errno);
        return false;
    }
    if (reason.length() == 0) reason = "it is empty, cut short or not a stream";
    return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

/** Where the state really is: the target of a link, so that saving does not replace the link. */
qnStr realPath(const char* path) {
    char* resolved = ::realpath(path, nullptr);
    qnStr result(resolved == nullptr ? path : resolved);
    std::free(resolved);
    return result;
}

/** The permissions of the file at `path`, or those of a new file. */
mode_t permissionsFor(const char* path) {
    struct stat status;
    if (::stat(path, &status) == 0) return status.st_mode & 07777;
    mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

/** Writes the counts and makes sure that they are in the file; `fd` is closed. */
bool write(int fd, WordCounts& counts) {
    Held<qnStdioStream> stream(new qnStdioStream(fd, qnStream::Write));
    if (stream->hasError()) return false;
    Held<qnTranscriber> writer(qnTranscriber::getWriter(stream.get()));
    return writer.get() != nullptr && writer->writeObject(&counts, &counts) && std::fflush(stream->file) == 0 &&
           ::fsync(fd) == 0;
}

}  // namespace

bool stateFile::load(const char* path, WordCounts& counts, qnStr& problem) {
    struct stat status;
    if (::stat(path, &status) != 0) {
        if (errno == ENOENT) return true;
        problem.format("cannot look at the state file: %s", std::strerror(errno));
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        problem = "is not a regular file; give --state a file of its own";
        return false;
    }
    if (::access(path, R_OK) != 0) {
        problem.format("cannot read the state file: %s", std::strerror(errno));
        return false;
    }
    qnStr reason;
    if (!isReadable(path, reason)) {
        problem.format("is not a whole state file (%s); move it away to start over", reason.text());
        return false;
    }
    // Assignment merges, and sorts every word into its own chain, whatever the file said.
    if (std::unique_ptr<WordCounts> loaded = read(path)) counts = *loaded;
    return true;
}

bool stateFile::save(const char* path, WordCounts& counts, qnStr& problem) {
    qnStr target = realPath(path);
    qnStr beside = target + ".XXXXXX";
    int fd = ::mkstemp(beside.data);
    if (fd < 0) {
        problem.format("cannot write the state beside it: %s", std::strerror(errno));
        return false;
    }
    bool saved = ::fchmod(fd, permissionsFor(target.text())) == 0 && write(fd, counts) &&
                 std::rename(beside.text(), target.text()) == 0;
    if (saved) return true;
    problem.format("cannot write the state: %s; the old state is kept", std::strerror(errno));
    ::unlink(beside.text());
    return false;
}
