#include <pwd.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "Checked.h"
#include "Path.h"
#include "core/Heap.h"

namespace {

/** The longest name of a user, in bytes. */
[[maybe_unused]] constexpr std::size_t LongestUserName = 255;

/** The first `length` bytes of `text`, terminated, in a block of their own. */
char* copyOf(const char* text, std::size_t length, const char* operation) {
    char* copy = static_cast<char*>(heap::allocate(length + 1, operation));
    std::memcpy(copy, text, length);
    copy[length] = 0;
    return copy;
}

/** The length of `path` without the slashes at its end. */
std::size_t lengthWithoutEnd(const char* path) {
    std::size_t length = std::strlen(path);
    while (length > 0 && path[length - 1] == '/') --length;
    return length;
}

/** The position after the last slash in the first `length` bytes of `path`; 0 without one. */
std::size_t afterLastSlash(const char* path, std::size_t length) {
    while (length > 0 && path[length - 1] != '/') --length;
    return length;
}

/**
 * A text that is being put together in a block from `malloc`: of the size that was asked for, or larger where that is
 * too small.
 */
class Block {
public:
    Block(std::size_t size, const char* operation)
        : size_(size == 0 ? 1 : size),  // room for the NUL in any case
          operation_(operation),
          text_(static_cast<char*>(heap::allocate(size_, operation))) {
        text_[0] = 0;
    }
    ~Block() { std::free(text_); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    void append(const char* text, std::size_t length) {
        if (length >= size_ - length_) grow(length_ + length + 1);
        std::memcpy(text_ + length_, text, length);
        length_ += length;
        text_[length_] = 0;
    }
    void set(const char* text, std::size_t length) {
        length_ = 0;
        append(text, length);
    }
    const char* text() const { return text_; }
    std::size_t length() const { return length_; }
    /** Gives the block away. */
    char* release() {
        char* text = text_;
        text_ = nullptr;
        return text;
    }

private:
    void grow(std::size_t needed) {
        size_ = needed < 2 * size_ ? 2 * size_ : needed;
        text_ = static_cast<char*>(heap::reallocate(text_, size_, operation_));
    }

    std::size_t size_;
    const char* operation_;
    char* text_;
    std::size_t length_ = 0;
};

void requireFit([[maybe_unused]] const Block& block, [[maybe_unused]] unsigned size) {
    MORVAQNDS_REQUIRE(block.length() < size,
                      "environmentVariableExtendedName: text of %lu characters does not fit %u bytes",
                      static_cast<unsigned long>(block.length()), size);
}

/** The end of the variable's name that starts at `name`, in a text that ends at `end`. */
const char* endOfName(const char* name, const char* end) {
    // Deliberate: nothing but a slash or a blank ends a name. What callers expand are paths.
    const char* stop = name + std::strcspn(name, "/ ");
    // Deliberate: at the end of the text the name stops one character early; what follows it is relied upon.
    return stop == end && stop != name ? stop - 1 : stop;
}

}  // namespace

char* pathbasename(const char* path) {
    if (path == nullptr) return nullptr;
    std::size_t end = lengthWithoutEnd(path);
    std::size_t start = afterLastSlash(path, end);
    return copyOf(path + start, end - start, "pathbasename");
}

char* pathdirname(const char* path) {
    MORVAQNDS_REQUIRE(path != nullptr, "pathdirname: null path");
    if (path == nullptr) path = "";
    std::size_t start = afterLastSlash(path, lengthWithoutEnd(path));
    if (start == 0) return copyOf(*path == '/' ? "/" : ".", 1, "pathdirname");
    while (start > 0 && path[start - 1] == '/') --start;
    // Deliberate: "/a" leaves nothing, not "/".
    return copyOf(path, start, "pathdirname");
}

char* pathexpandtilde(const char* path) {
    const char* const operation = "pathexpandtilde";
    if (path == nullptr) path = "";
    if (*path != '~') return copyOf(path, std::strlen(path), operation);
    const char* rest = path + 1 + std::strcspn(path + 1, "/");
    std::size_t nameLength = static_cast<std::size_t>(rest - (path + 1));
    const char* home;
    if (nameLength == 0) {
        home = std::getenv("HOME");
    } else {
        MORVAQNDS_REQUIRE(nameLength <= LongestUserName, "pathexpandtilde: user name of %lu bytes",
                          static_cast<unsigned long>(nameLength));
        char* name = copyOf(path + 1, nameLength, operation);
        const passwd* user = getpwnam(name);
        std::free(name);
        if (user == nullptr) return copyOf(path, std::strlen(path), operation);
        home = user->pw_dir;
    }
    if (home == nullptr) home = "";
    Block result(std::strlen(home) + std::strlen(rest) + 1, operation);
    result.append(home, std::strlen(home));
    result.append(rest, std::strlen(rest));
    return result.release();
}

char* symbolicLinkExtendedName(const char* path, unsigned size) {
    const char* const operation = "symbolicLinkExtendedName";
    if (path == nullptr) return nullptr;
    char* target = static_cast<char*>(heap::allocate(size, operation));
    ssize_t length = readlink(path, target, size);
    if (length < 1) {
        std::free(target);
        return nullptr;
    }
    MORVAQNDS_REQUIRE(static_cast<std::size_t>(length) < size,
                      "symbolicLinkExtendedName: target of %s does not fit %u bytes", path, size);
    // A target that fills the block needs one byte more.
    if (static_cast<std::size_t>(length) == size) {
        target = static_cast<char*>(heap::reallocate(target, std::size_t(size) + 1, operation));
    }
    target[length] = 0;
    return target;
}

char* environmentVariableExtendedName(const char* text, unsigned size) {
    const char* const operation = "environmentVariableExtendedName";
    if (text == nullptr) return nullptr;
    const char* end = text + std::strlen(text);
    Block result(size, operation);
    Block name(size, operation);
    while (text != end) {
        if (*text != '$') {
            std::size_t run = std::strcspn(text, "$");
            result.append(text, run);
            text += run;
            continue;
        }
        const char* nameEnd = endOfName(text + 1, end);
        name.set(text + 1, static_cast<std::size_t>(nameEnd - (text + 1)));
        requireFit(name, size);
        const char* value = std::getenv(name.text());
        if (value == nullptr) return nullptr;
        result.append(value, std::strlen(value));
        text = nameEnd;
    }
    requireFit(result, size);
    return result.release();
}
