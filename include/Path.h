#ifndef MORVAQNDS_PATH_H
#define MORVAQNDS_PATH_H

#include "Str.h"

/**
 * File names: taking them apart, and expanding `~` and `$NAME`.
 *
 *     char* home = pathexpandtilde("~/notes.txt");        // "/home/ada/notes.txt"
 *     char* folder = pathdirname(home);                   // "/home/ada"
 *     std::free(folder);
 *     std::free(home);
 *     qnStr leaf = qnPath("/home/ada/notes.txt").leaf();  // "notes.txt"
 *
 * Every text that a plain function returns is a block from `malloc`, terminated by a NUL, that the caller frees.
 *
 * Unusual:
 * - `pathdirname("/a")` is the empty text, not "/".
 * - A `$NAME` at the very end of a text leaves the last character of the name out.
 * - An unset variable makes the whole expansion null.
 * - `qnPath` is split by a service that a program may replace, `path_strip_leaf` in Platform.h.
 */

/**
 * The last component of `path`; slashes at its end do not count. The empty text when there is none, null for null.
 *
 *     "a/b/" gives "b", "b" gives "b", "///" gives "".
 */
MORVAQNDS_API char* pathbasename(const char* path);

/**
 * What stands before the last component of `path` and the slashes in front of it; slashes at its end do not count.
 * Without such slashes it is "/" when the path starts with one, else ".".
 *
 *     "a/b/" gives "a", "a" gives ".", "//" gives "/".
 *
 * Deliberate: "/a" gives the empty text; callers put a slash and a name behind the result.
 *
 * Requires: `path` is not null; null counts as the empty text.
 */
MORVAQNDS_API char* pathdirname(const char* path);

/**
 * `path` with a leading `~` replaced by the value of the environment variable HOME (empty when unset) or a leading
 * `~user` by that user's home directory. A copy of the path when there is no such user or no `~`. Null counts as the
 * empty text.
 *
 * Requires: names of users are at most 255 bytes long; a longer one is looked up like any other.
 */
MORVAQNDS_API char* pathexpandtilde(const char* path);

/**
 * The target of the symbolic link `path`, at most `size` bytes of it, in a block of `size` bytes, or one more where the
 * target fills them. Null when `path` is null or not a link that can be read, or `size` is 0.
 *
 * Requires: a target shorter than `size`; a longer one is cut.
 */
MORVAQNDS_API char* symbolicLinkExtendedName(const char* path, unsigned size);

/**
 * `text` with every `$NAME` replaced by the value of that environment variable. A name goes on to the next slash or
 * blank, and everything in between belongs to it. Null when `text` is null or a variable is not set. The block of the
 * result has at least `size` bytes.
 *
 *     With V set to "v", "$V/x" gives "v/x".
 *
 * Deliberate: a name that is not ended by a slash or a blank ends before the last character of the text, which follows
 * the value as it is: "$Vx" gives "vx", and "$V" looks up the empty name.
 *
 * Requires: `size` bytes hold the result and every name, each with its NUL; the block is larger where they do not.
 */
MORVAQNDS_API char* environmentVariableExtendedName(const char* text, unsigned size);

/**
 * A string that is used as a path.
 *
 *     qnPath path("/etc/hosts");
 *     qnStr directory, leaf;
 *     path.split(directory, leaf);  // "/etc" and "hosts"
 */
class MORVAQNDS_API qnPath : public qnStr {
public:
    /** A copy of `path`; null is the empty path. */
    qnPath(const char* path) : qnStr(path) {}
    qnPath(const qnStr& path) : qnStr(path) {}

    /**
     * Sets `directory` and `leaf` to what `path_strip_leaf` makes of this path, and returns its status. The service is
     * given room for as many characters as the path has, and its NUL, for each of the two.
     */
    int split(qnStr& directory, qnStr& leaf) const;
    /** The leaf that `split` finds. */
    qnStr leaf() const;
    /** The directory that `split` finds. */
    qnStr directory() const;
};

#endif
