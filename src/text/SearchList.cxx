#include "SearchList.h"

#include <dirent.h>

#include <cstring>
#include <memory>

#include "RegEx.h"

namespace {

struct Closer {
    void operator()(DIR* directory) const { closedir(directory); }
};

bool isWhole(const qnRegEx& pattern, const char* name) {
    std::size_t length = std::strlen(name);
    int start, end;
    pattern.bracketBuffer(name, static_cast<unsigned>(length), start, end);
    return start == 0 && static_cast<std::size_t>(end) == length;
}

/** The compiled expression. One that does not compile is compiled, and reported, again for every directory. */
class Pattern {
public:
    explicit Pattern(const qnStr& expression) : expression_(expression) {}

    const qnRegEx& forDirectory() {
        if (!compiled_ || compiled_->findBuffer("", 0) == -2) compiled_.reset(new qnRegEx(expression_));
        return *compiled_;
    }

private:
    const qnStr& expression_;
    std::unique_ptr<qnRegEx> compiled_;
};

/** Makes `field` the text `value`, null being the empty one; whether it was another one before. */
bool change(qnStr& field, const char* value) {
    if (value == nullptr) value = "";
    if (field == value) return false;
    field = value;
    return true;
}

}  // namespace

qnSearchList::qnSearchList(const char* searchList, const char* regexp) : regexp_(regexp), searchList_(searchList) {
    if (searchList_.length() != 0) recalc();
}

void qnSearchList::searchList(const char* searchList) { searchCriteria(searchList, regexp_.text()); }

void qnSearchList::regexp(const char* regexp) { searchCriteria(searchList_.text(), regexp); }

void qnSearchList::searchCriteria(const char* searchList, const char* regexp) {
    bool listChanged = change(searchList_, searchList);
    bool regexpChanged = change(regexp_, regexp);
    if (listChanged || regexpChanged) recalc();
}

void qnSearchList::recalc() {
    resize(0);
    Pattern pattern(regexp_);
    for (unsigned position = 0; position < searchList_.length();) {
        qnStr prefix = searchList_.token(position, ':');
        std::unique_ptr<DIR, Closer> directory(opendir(prefix.text()));
        if (directory == nullptr) continue;
        prefix.append('/');
        const qnRegEx& expression = pattern.forDirectory();
        while (const dirent* entry = readdir(directory.get())) {
            if (!isWhole(expression, entry->d_name)) continue;
            qnStr name = prefix + entry->d_name;
            append(&name);
        }
    }
}
