#include "Path.h"

#include <cstring>

#include "Platform.h"

namespace {

/** Room in a string for `length` characters and their NUL, all of them NUL. */
class Room {
public:
    Room(qnStr& text, unsigned length) : text_(text) {
        text_ = "";
        text_.resize(length);
        // The buffer of all empty strings must not be written; and growing leaves the first character unset.
        if (length != 0) text_.data[0] = 0;
    }

    char* start() { return text_.length() == 0 ? &nothing_ : text_.data; }
    unsigned capacity() const { return text_.length() + 1; }

    /** Cuts the string to what was written, terminated or not. */
    void cut() { text_.resize(static_cast<unsigned>(strnlen(text_.text(), text_.length()))); }

private:
    qnStr& text_;
    char nothing_ = 0;
};

}  // namespace

int qnPath::split(qnStr& directory, qnStr& leaf) const {
    const qnStr path(*this);  // either of the results may be this string
    Room directoryRoom(directory, path.length());
    Room leafRoom(leaf, path.length());
    int status = path_strip_leaf(path.text(), directoryRoom.capacity(), directoryRoom.start(), leafRoom.capacity(),
                                 leafRoom.start());
    directoryRoom.cut();
    leafRoom.cut();
    return status;
}

qnStr qnPath::leaf() const {
    qnStr found, directory;
    split(directory, found);
    return found;
}

qnStr qnPath::directory() const {
    qnStr found, leaf;
    split(found, leaf);
    return found;
}
