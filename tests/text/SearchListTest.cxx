#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "SearchList.h"
#include "text/RegexpMessages.h"

namespace SearchListTest {

#if defined(__i386__) || defined(__powerpc__)
static_assert(sizeof(qnSearchList) == sizeof(qnStrArray) + 2 * sizeof(qnStr), "the expression and the directories");
static_assert(sizeof(qnSearchList) == 40, "");
#endif

typedef std::vector<std::string> Names;

/** A temporary directory that is removed with everything directly in it. */
class Folder {
public:
    Folder() {
        std::string name = testing::TempDir() + "qnlistXXXXXX";
        if (mkdtemp(&name[0]) != nullptr) path_ = name;
        EXPECT_FALSE(path_.empty());
    }
    explicit Folder(const Names& names) : Folder() {
        for (const std::string& name : names) add(name);
    }
    ~Folder() { removeAll(); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    void add(const std::string& name) const {
        int fd = open((path_ + "/" + name).c_str(), O_CREAT | O_WRONLY, 0644);
        EXPECT_GE(fd, 0) << name;
        close(fd);
    }
    void addFolder(const std::string& name) const { EXPECT_EQ(0, mkdir((path_ + "/" + name).c_str(), 0755)); }
    /** The names in the order in which the directory has them, without the directory itself and its parent. */
    Names entries() const {
        Names names;
        std::error_code error;
        for (std::filesystem::directory_iterator it(path_, error), end; it != end; it.increment(error)) {
            names.push_back(it->path().filename().string());
        }
        return names;
    }
    void removeAll() const {
        for (const std::string& name : entries()) {
            std::string path = path_ + "/" + name;
            if (unlink(path.c_str()) != 0) rmdir(path.c_str());
        }
        rmdir(path_.c_str());
    }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

Names namesOf(const qnSearchList& list) {
    Names names;
    for (unsigned i = 0; i < list.length(); ++i) {
        const qnStr& name = list.elements()[i];
        names.push_back(std::string(name.text(), name.length()));
    }
    return names;
}

Names sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
}

/** What a search finds, in the order of the names. */
Names found(const std::string& searchList, const char* regexp) {
    return sorted(namesOf(qnSearchList(searchList.c_str(), regexp)));
}

// ---- Which names ----

TEST(SearchListTest, AFullNameIsTheDirectoryASlashAndTheEntry) {
    Folder folder({"one.c", "two.c", "three.h"});
    EXPECT_EQ((Names{folder.path() + "/one.c", folder.path() + "/two.c"}), found(folder.path(), ".*\\.c"));
}

TEST(SearchListTest, AMatchOfAPartOfTheNameDoesNotSelectIt) {
    Folder folder({"abc", "ab", "xab"});
    EXPECT_EQ(Names{folder.path() + "/ab"}, found(folder.path(), "ab"));
    EXPECT_EQ(Names{}, found(folder.path(), "a"));
    EXPECT_EQ(Names{}, found(folder.path(), "b"));
    EXPECT_EQ(Names{}, found(folder.path(), ""));
}

TEST(SearchListTest, TheFirstAlternativeThatMatchesCounts) {
    Folder folder({"ab"});
    EXPECT_EQ(Names{}, found(folder.path(), "a|ab"));
    EXPECT_EQ(Names{folder.path() + "/ab"}, found(folder.path(), "ab|a"));
    EXPECT_EQ(Names{folder.path() + "/ab"}, found(folder.path(), "(a|ab)$"));
}

TEST(SearchListTest, TheDirectoryAndItsParentAreEntriesToo) {
    Folder folder({"a"});
    EXPECT_EQ((Names{folder.path() + "/.", folder.path() + "/.."}), found(folder.path(), "[.]+"));
    EXPECT_EQ((Names{folder.path() + "/.", folder.path() + "/..", folder.path() + "/a"}), found(folder.path(), ".*"));
}

TEST(SearchListTest, DirectoriesInADirectoryAreEntries) {
    Folder folder({"a1"});
    folder.addFolder("a2");
    EXPECT_EQ((Names{folder.path() + "/a1", folder.path() + "/a2"}), found(folder.path(), "a."));
}

TEST(SearchListTest, NamesWithNewlines) {
    Folder folder({"a\nb", "a", "b", "\n"});
    EXPECT_EQ(Names{folder.path() + "/a\nb"}, found(folder.path(), "a.b"));
    EXPECT_EQ(Names{folder.path() + "/\n"}, found(folder.path(), "[^ab.]"));
    // In the expression a newline separates alternatives.
    EXPECT_EQ((Names{folder.path() + "/a", folder.path() + "/b"}), found(folder.path(), "a\nb"));
}

TEST(SearchListTest, NamesOfAnyBytesAndOfTheGreatestLength) {
    std::string longest(255, 'n');
    Folder folder({"\x01\xff", longest, "a b:c$"});
    EXPECT_EQ((Names{folder.path() + "/\x01\xff", folder.path() + "/a b:c$", folder.path() + "/" + longest}),
              found(folder.path(), "[^.].*"));
}

// ---- The list of directories ----

TEST(SearchListTest, ColonsAloneGiveNothing) {
    EXPECT_EQ(Names{}, found("::", ".*"));
    EXPECT_EQ(Names{}, found(":", ".*"));
}

TEST(SearchListTest, EmptyEntriesAreSkipped) {
    Folder one({"a"});
    Folder two({"a"});
    Names both{one.path() + "/a", two.path() + "/a"};
    EXPECT_EQ(both, namesOf(qnSearchList((one.path() + ":" + two.path()).c_str(), "a")));
    EXPECT_EQ(both, namesOf(qnSearchList((one.path() + ":::" + two.path()).c_str(), "a")));
    EXPECT_EQ(both, namesOf(qnSearchList((":" + one.path() + ":" + two.path() + ":").c_str(), "a")));
}

TEST(SearchListTest, TheOrderIsThatOfTheListAndThenOfTheDirectory) {
    Names names;
    for (int i = 0; i < 50; ++i) names.push_back("f" + std::to_string(i * 37 % 50));
    Folder one(names);
    Folder two(names);
    Names expected;
    for (const Folder* folder : {&two, &one}) {
        for (const std::string& entry : folder->entries()) {
            if (entry[0] == 'f') expected.push_back(folder->path() + "/" + entry);
        }
    }
    ASSERT_EQ(100u, expected.size());
    EXPECT_EQ(expected, namesOf(qnSearchList((two.path() + ":" + one.path()).c_str(), "f.*")));
}

TEST(SearchListTest, DuplicatesAreKept) {
    Folder folder({"a"});
    EXPECT_EQ(Names(2, folder.path() + "/a"), found(folder.path() + ":" + folder.path(), "a"));
}

TEST(SearchListTest, ASlashAtTheEndOfADirectoryStays) {
    Folder folder({"a"});
    EXPECT_EQ(Names{folder.path() + "//a"}, found(folder.path() + "/", "a"));
}

TEST(SearchListTest, TenThousandEntries) {
    Folder folder;
    for (int i = 0; i < 10000; ++i) folder.add(std::to_string(i));
    qnSearchList list(folder.path().c_str(), "[0-9]+");
    EXPECT_EQ(10000u, list.length());
    Names expected;
    for (int i = 0; i < 10000; ++i) expected.push_back(folder.path() + "/" + std::to_string(i));
    EXPECT_EQ(sorted(expected), sorted(namesOf(list)));
    list.regexp("[0-9]*7");
    EXPECT_EQ(1000u, list.length());
}

// ---- What cannot be read ----

TEST(SearchListTest, DirectoriesThatCannotBeOpenedAreSkipped) {
    Folder folder({"a", "file"});
    std::string loop = folder.path() + "/loop";
    ASSERT_EQ(0, symlink("loop", loop.c_str()));
    std::string list =
        folder.path() + "/none:" + folder.path() + "/file:" + loop + ":" + std::string(300, 'x') + ":" + folder.path();
    EXPECT_EQ(Names{folder.path() + "/a"}, found(list, "a"));
}

/** For a child process: the number of names that a user without rights finds. */
int countAsNobody(const std::string& searchList) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return 99;
    return static_cast<int>(qnSearchList(searchList.c_str(), "[ab]").length());
}

TEST(SearchListTest, DirectoriesThatMayNotBeReadAreSkipped) {
    Folder closed({"a"});
    Folder open({"b"});
    chmod(open.path().c_str(), 0755);
    chmod(closed.path().c_str(), 0311);
    pid_t child = fork();
    if (child == 0) _exit(countAsNobody(closed.path() + ":" + open.path()));
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    chmod(closed.path().c_str(), 0755);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(1, WEXITSTATUS(status)) << "99: the child could not become another user";
}

TEST(SearchListTest, ADirectoryThatHasVanishedIsEmptyAtTheNextSearch) {
    Folder folder({"a"});
    qnSearchList list(folder.path().c_str(), "a");
    ASSERT_EQ(1u, list.length());
    folder.removeAll();
    EXPECT_EQ(1u, list.length());
    list.recalc();
    EXPECT_EQ(0u, list.length());
}

TEST(SearchListTest, ADirectoryThatVanishesWhileItIsOpenHasNoEntries) {
    Folder gone;
    Folder other({"a"});
    int fd = open(gone.path().c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(fd, 0);
    gone.removeAll();
    EXPECT_EQ(Names{other.path() + "/a"}, found("/proc/self/fd/" + std::to_string(fd) + ":" + other.path(), "a"));
    close(fd);
}

TEST(SearchListTest, EntriesThatComeAndGoDuringTheSearch) {
    Folder folder;
    for (int i = 0; i < 500; ++i) folder.add("stays" + std::to_string(i));
    pid_t child = fork();
    if (child == 0) {
        alarm(100);
        for (;;) {
            for (int i = 0; i < 100; ++i) folder.add("goes" + std::to_string(i));
            for (int i = 0; i < 100; ++i) unlink((folder.path() + "/goes" + std::to_string(i)).c_str());
        }
    }
    for (int i = 0; i < 50; ++i) {
        qnSearchList list(folder.path().c_str(), "stays[0-9]+|goes[0-9]+");
        Names names = namesOf(list);
        auto stays = [](const std::string& name) { return name.find("/stays") != std::string::npos; };
        EXPECT_EQ(500, std::count_if(names.begin(), names.end(), stays));
    }
    kill(child, SIGKILL);
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
}

TEST(SearchListTest, DirectoriesAreClosedAgain) {
    Folder folder({"a"});
    auto lowestFree = [] {
        int fd = open("/dev/null", O_RDONLY);
        close(fd);
        return fd;
    };
    int before = lowestFree();
    qnSearchList list((folder.path() + ":/does/not/exist:" + folder.path()).c_str(), "a");
    list.regexp("(");
    EXPECT_EQ(before, lowestFree());
}

TEST(SearchListTest, APipeInTheListIsSkippedWithoutWaiting) {
    Folder folder({"a"});
    std::string pipe = folder.path() + "/pipe";
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    EXPECT_EQ(Names{folder.path() + "/a"}, found(pipe + ":" + folder.path(), "a"));
}

// ---- The expression ----

TEST(SearchListTest, AnExpressionThatDoesNotCompileFindsNothing) {
    Folder folder({"a", "("});
    EXPECT_EQ(Names{}, found(folder.path(), "("));
}

TEST(SearchListTest, ABadExpressionIsReportedOnceForEachDirectoryThatOpens) {
    Folder one({"a"});
    Folder two({"a"});
    regexpMessages().clear();
    qnSearchList list((one.path() + ":/does/not/exist:" + two.path()).c_str(), "*");
    EXPECT_EQ(Names(2, "?+* follows nothing"), regexpMessages());
}

TEST(SearchListTest, WithoutDirectoriesNothingIsCompiled) {
    regexpMessages().clear();
    qnSearchList empty("", "*");
    qnSearchList colons("::", "*");
    qnSearchList missing("/does/not/exist", "*");
    EXPECT_EQ(Names{}, regexpMessages());
}

// ---- Changing the criteria ----

TEST(SearchListTest, AnEmptySearchListFindsNothing) {
    EXPECT_EQ(Names{}, found("", ".*"));
    qnSearchList list("", ".*");
    list.recalc();
    EXPECT_EQ(0u, list.length());
}

TEST(SearchListTest, TheExpressionStandsBeforeTheDirectories) {
    qnSearchList list("/does/not/exist", "a+");
    const qnStr* fields = reinterpret_cast<const qnStr*>(reinterpret_cast<const char*>(&list) + sizeof(qnStrArray));
    EXPECT_STREQ("a+", fields[0].text());
    EXPECT_STREQ("/does/not/exist", fields[1].text());
}

TEST(SearchListTest, NullArgumentsAreEmptyTexts) {
    qnSearchList list(nullptr, nullptr);
    EXPECT_EQ(0u, list.length());
    Folder folder({"a"});
    list.searchList(folder.path().c_str());
    EXPECT_EQ(0u, list.length());
    list.regexp("a");
    EXPECT_EQ(1u, list.length());
    list.searchList(nullptr);
    EXPECT_EQ(0u, list.length());
}

TEST(SearchListTest, AnotherSearchListSearchesAgain) {
    Folder one({"a"});
    Folder two({"a", "b"});
    qnSearchList list(one.path().c_str(), "[ab]");
    list.searchList(two.path().c_str());
    EXPECT_EQ((Names{two.path() + "/a", two.path() + "/b"}), sorted(namesOf(list)));
    list.searchList("");
    EXPECT_EQ(0u, list.length());
}

TEST(SearchListTest, AnotherExpressionSearchesAgain) {
    Folder folder({"a", "b"});
    qnSearchList list(folder.path().c_str(), "a");
    list.regexp("b");
    EXPECT_EQ(Names{folder.path() + "/b"}, namesOf(list));
}

TEST(SearchListTest, TheSameValuesDoNotSearchAgain) {
    Folder folder({"a1"});
    qnSearchList list(folder.path().c_str(), "a.");
    folder.add("a2");
    list.searchList(folder.path().c_str());
    list.regexp("a.");
    list.searchCriteria(folder.path().c_str(), "a.");
    EXPECT_EQ(1u, list.length());
    list.recalc();
    EXPECT_EQ(2u, list.length());
}

TEST(SearchListTest, BothCriteriaSearchOnceIfEitherDiffers) {
    Folder one({"a"});
    Folder two({"b"});
    qnSearchList list(one.path().c_str(), "a");
    list.searchCriteria(one.path().c_str(), "b");
    EXPECT_EQ(0u, list.length());
    list.searchCriteria(two.path().c_str(), "b");
    EXPECT_EQ(Names{two.path() + "/b"}, namesOf(list));
    regexpMessages().clear();
    list.searchCriteria(one.path().c_str(), "*");
    EXPECT_EQ(1u, regexpMessages().size());
    list.searchCriteria(one.path().c_str(), "*");
    EXPECT_EQ(1u, regexpMessages().size());
}

TEST(SearchListTest, ANameOfTheListMayBeTheNextSearchList) {
    Folder folder;
    folder.addFolder("inner");
    std::string inner = folder.path() + "/inner";
    ASSERT_EQ(0, symlink("nowhere", (inner + "/a").c_str()));
    qnSearchList list(folder.path().c_str(), "inner");
    ASSERT_EQ(1u, list.length());
    list.searchCriteria(list.elements()[0].text(), "a");
    EXPECT_EQ(Names{inner + "/a"}, namesOf(list));
    unlink((inner + "/a").c_str());
}

TEST(SearchListTest, NamesOfTheListMayBeBothCriteria) {
    Folder folder;
    folder.addFolder("inner");
    qnSearchList list(folder.path().c_str(), "inner");
    ASSERT_EQ(1u, list.length());
    // The directory's name matches no entry of its own.
    list.searchCriteria(list.elements()[0].text(), list.elements()[0].text());
    EXPECT_EQ(0u, list.length());
    list.regexp("[.]");
    EXPECT_EQ(Names{folder.path() + "/inner/."}, namesOf(list));
}

TEST(SearchListTest, TheNamesAreAnArrayThatTheNextSearchEmpties) {
    Folder folder({"a"});
    qnSearchList list(folder.path().c_str(), "a");
    qnStr more("more");
    list.append(&more);
    EXPECT_EQ((Names{folder.path() + "/a", "more"}), namesOf(list));
    list.recalc();
    EXPECT_EQ(Names{folder.path() + "/a"}, namesOf(list));
}

TEST(SearchListTest, ACopyHasItsOwnNamesAndCriteria) {
    Folder folder({"a", "b"});
    qnSearchList list(folder.path().c_str(), "a");
    qnSearchList copy(list);
    copy.regexp("b");
    EXPECT_EQ(Names{folder.path() + "/a"}, namesOf(list));
    EXPECT_EQ(Names{folder.path() + "/b"}, namesOf(copy));
    list = copy;
    folder.removeAll();
    list.regexp("b");  // the same by now
    EXPECT_EQ(Names{folder.path() + "/b"}, namesOf(list));
}

TEST(SearchListTest, InStreamsItIsAnArrayOfStrings) {
    qnSearchList list("", "");
    EXPECT_STREQ("ARRAY", list.className());
    EXPECT_EQ(&qnStrArray_type, &list.getTypeObj());
}

}  // namespace SearchListTest
