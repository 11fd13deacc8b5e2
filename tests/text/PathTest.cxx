#include <gtest/gtest.h>
#include <malloc.h>
#include <pwd.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Path.h"
#include "Platform.h"

namespace PathTest {

static_assert(sizeof(qnPath) == sizeof(qnStr), "a path adds no fields");

/** Takes over a result, which must be a block from `malloc`. */
std::string taken(char* text) {
    if (text == nullptr) return "(null)";
    std::string copy(text);
    std::free(text);
    return copy;
}

std::string baseOf(const char* path) { return taken(pathbasename(path)); }
std::string dirOf(const char* path) { return taken(pathdirname(path)); }
std::string expanded(const char* path) { return taken(pathexpandtilde(path)); }
std::string replaced(const char* text, unsigned size = 1000) {
    return taken(environmentVariableExtendedName(text, size));
}

/** Sets a variable, or removes it for a null value, for the length of a block. */
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        const char* before = std::getenv(name);
        wasSet_ = before != nullptr;
        if (wasSet_) before_ = before;
        if (value != nullptr) {
            setenv(name, value, 1);
        } else {
            unsetenv(name);
        }
    }
    ~Variable() {
        if (wasSet_) {
            setenv(name_, before_.c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* name_;
    bool wasSet_;
    std::string before_;
};

// ---- pathbasename ----

TEST(PathBasenameTest, TheLastComponent) {
    EXPECT_EQ("b", baseOf("a/b"));
    EXPECT_EQ("c", baseOf("/a/b/c"));
    EXPECT_EQ("a", baseOf("a"));
    EXPECT_EQ("a", baseOf("/a"));
    EXPECT_EQ("b", baseOf("a//b"));
    EXPECT_EQ(".", baseOf("a/."));
}

TEST(PathBasenameTest, SlashesAtTheEndAreIgnored) {
    EXPECT_EQ("b", baseOf("a/b/"));
    EXPECT_EQ("b", baseOf("a/b///"));
    EXPECT_EQ("a", baseOf("a/"));
}

TEST(PathBasenameTest, OnlySlashesGiveTheEmptyText) {
    EXPECT_EQ("", baseOf("/"));
    EXPECT_EQ("", baseOf("///"));
}

TEST(PathBasenameTest, TheEmptyPathGivesTheEmptyText) { EXPECT_EQ("", baseOf("")); }

TEST(PathBasenameTest, NullGivesNull) { EXPECT_EQ(nullptr, pathbasename(nullptr)); }

// ---- pathdirname ----

TEST(PathDirnameTest, EverythingBeforeTheLastSlashes) {
    EXPECT_EQ("a", dirOf("a/b"));
    EXPECT_EQ("/a/b", dirOf("/a/b/c"));
    EXPECT_EQ("a/b", dirOf("a/b//c"));
    EXPECT_EQ("a//b", dirOf("a//b/c"));
}

TEST(PathDirnameTest, SlashesAtTheEndAreIgnored) {
    EXPECT_EQ("a", dirOf("a/b/"));
    EXPECT_EQ("a", dirOf("a//b//"));
}

TEST(PathDirnameTest, WithoutSlashesInFrontItIsTheCurrentFolder) {
    EXPECT_EQ(".", dirOf("a"));
    EXPECT_EQ(".", dirOf("a/"));
    EXPECT_EQ(".", dirOf(""));
}

TEST(PathDirnameTest, OnlySlashesGiveOneSlash) {
    EXPECT_EQ("/", dirOf("/"));
    EXPECT_EQ("/", dirOf("///"));
}

TEST(PathDirnameTest, ANameRightUnderTheRootGivesTheEmptyText) {
    EXPECT_EQ("", dirOf("/a"));
    EXPECT_EQ("", dirOf("//a"));
    EXPECT_EQ("", dirOf("/a/"));
}

// ---- pathexpandtilde ----

TEST(PathExpandTildeTest, ATildeAloneIsHome) {
    Variable home("HOME", "/h");
    EXPECT_EQ("/h/x", expanded("~/x"));
    EXPECT_EQ("/h", expanded("~"));
    EXPECT_EQ("/h/", expanded("~/"));
    EXPECT_EQ("/h//x/~", expanded("~//x/~"));
}

TEST(PathExpandTildeTest, AnUnsetHomeCountsAsEmpty) {
    Variable home("HOME", nullptr);
    EXPECT_EQ("/x", expanded("~/x"));
    EXPECT_EQ("", expanded("~"));
}

TEST(PathExpandTildeTest, AnEmptyHomeIsEmpty) {
    Variable home("HOME", "");
    EXPECT_EQ("/x", expanded("~/x"));
}

TEST(PathExpandTildeTest, AUsersHomeComesFromTheUserDatabase) {
    Variable home("HOME", "/h");
    const passwd* root = getpwnam("root");
    ASSERT_NE(nullptr, root);
    std::string folder = root->pw_dir;
    EXPECT_EQ(folder + "/x/y", expanded("~root/x/y"));
    EXPECT_EQ(folder, expanded("~root"));
}

TEST(PathExpandTildeTest, AnUnknownUserLeavesThePathUnchanged) {
    EXPECT_EQ("~nosuchuser/x", expanded("~nosuchuser/x"));
    EXPECT_EQ("~nosuchuser", expanded("~nosuchuser"));
}

TEST(PathExpandTildeTest, WithoutALeadingTildeThePathIsUnchanged) {
    Variable home("HOME", "/h");
    EXPECT_EQ("a/~/x", expanded("a/~/x"));
    EXPECT_EQ(" ~", expanded(" ~"));
    EXPECT_EQ("", expanded(""));
}

TEST(PathExpandTildeTest, NullIsTheEmptyText) { EXPECT_EQ("", expanded(nullptr)); }

TEST(PathExpandTildeTest, ALongHomeAndALongRest) {
    std::string folder(100000, 'h');
    std::string rest = "/" + std::string(100000, 'x');
    Variable home("HOME", folder.c_str());
    EXPECT_EQ(folder + rest, expanded(("~" + rest).c_str()));
}

TEST(PathExpandTildeTest, NamesOfUsersAreNotTakenApart) {
    for (const char* path : {"~root:x/y", "~root\n/y", "~ /y", "~~/y", "~\xff\x80/y"}) EXPECT_EQ(path, expanded(path));
}

TEST(PathExpandTildeTest, NamesOfUsersUpTo255Bytes) {
    std::string path = "~" + std::string(255, 'u') + "/x";
    EXPECT_EQ(path, expanded(path.c_str()));
}

// ---- symbolicLinkExtendedName ----

/** A folder for the links of one test. */
class SymbolicLinkTest : public testing::Test {
protected:
    SymbolicLinkTest() {
        std::string name = testing::TempDir() + "qnlinkXXXXXX";
        folder_ = mkdtemp(&name[0]) == nullptr ? "" : name;
        link_ = folder_ + "/link";
    }
    ~SymbolicLinkTest() override {
        unlink(link_.c_str());
        rmdir(folder_.c_str());
    }
    void link(const std::string& target) { ASSERT_EQ(0, symlink(target.c_str(), link_.c_str())); }
    std::string target(unsigned size) { return taken(symbolicLinkExtendedName(link_.c_str(), size)); }

    std::string folder_;
    std::string link_;
};

TEST_F(SymbolicLinkTest, TheTargetOfALink) {
    link("some/where");
    EXPECT_EQ("some/where", target(1024));
    EXPECT_EQ("some/where", target(11));
}

TEST_F(SymbolicLinkTest, WhatIsNoLinkGivesNull) {
    EXPECT_EQ(nullptr, symbolicLinkExtendedName(folder_.c_str(), 1024));
    EXPECT_EQ(nullptr, symbolicLinkExtendedName((folder_ + "/none").c_str(), 1024));
    EXPECT_EQ(nullptr, symbolicLinkExtendedName("", 1024));
}

TEST_F(SymbolicLinkTest, ALinkToItselfHasATarget) {
    link("link");
    EXPECT_EQ("link", target(1024));
}

TEST_F(SymbolicLinkTest, TheTargetIsReadOnceAndNotFollowed) {
    link("~/$NAME/../x/");
    EXPECT_EQ("~/$NAME/../x/", target(1024));
}

TEST_F(SymbolicLinkTest, TheLongestTarget) {
    link(std::string(4095, 't'));
    EXPECT_EQ(std::string(4095, 't'), target(4096));
}

TEST_F(SymbolicLinkTest, NullGivesNull) { EXPECT_EQ(nullptr, symbolicLinkExtendedName(nullptr, 1024)); }

TEST_F(SymbolicLinkTest, SizeZeroGivesNull) {
    link("some/where");
    EXPECT_EQ(nullptr, symbolicLinkExtendedName(link_.c_str(), 0));
}

TEST_F(SymbolicLinkTest, TheBlockHasTheSizeThatWasAskedFor) {
    link("a");
    char* text = symbolicLinkExtendedName(link_.c_str(), 5000);
    ASSERT_NE(nullptr, text);
    EXPECT_GE(malloc_usable_size(text), 5000u);
    std::free(text);
}

// ---- environmentVariableExtendedName ----

TEST(EnvironmentTest, ANameGoesOnToTheNextSlash) {
    Variable v("QN_V", "v");
    EXPECT_EQ("v/x", replaced("$QN_V/x"));
    EXPECT_EQ("v/", replaced("$QN_V/"));
    EXPECT_EQ("a/v/b", replaced("a/$QN_V/b"));
}

TEST(EnvironmentTest, ANameGoesOnToTheNextBlank) {
    Variable v("QN_V", "v");
    EXPECT_EQ("v x", replaced("$QN_V x"));
    EXPECT_EQ("v ", replaced("$QN_V "));
}

TEST(EnvironmentTest, NothingElseEndsAName) {
    Variable v("QN_V", "v");
    Variable odd("QN_V:$QN_V\t", "odd");
    EXPECT_EQ("odd/x", replaced("$QN_V:$QN_V\t/x"));
    EXPECT_EQ("(null)", replaced("$QN_V.c/x"));
}

TEST(EnvironmentTest, ANameAtTheEndStopsOneCharacterEarly) {
    Variable v("QN_V", "v");
    Variable vx("QN_VX", "other");
    EXPECT_EQ("vX", replaced("$QN_VX"));
    EXPECT_EQ("(null)", replaced("$QN_V"));  // looks for "QN_"
    Variable cut("QN_", "cut");
    EXPECT_EQ("cutV", replaced("$QN_V"));
}

TEST(EnvironmentTest, OneCharacterAtTheEndLooksUpTheEmptyName) {
    Variable v("V", "v");
    EXPECT_EQ("(null)", replaced("$V"));
    EXPECT_EQ("v/x", replaced("$V/x"));
}

TEST(EnvironmentTest, ADollarSignAtTheEndHasTheEmptyName) {
    EXPECT_EQ("(null)", replaced("$"));
    EXPECT_EQ("(null)", replaced("a/$"));
}

TEST(EnvironmentTest, AnEmptyNameInTheMiddle) {
    EXPECT_EQ("(null)", replaced("$/x"));
    EXPECT_EQ("(null)", replaced("$ x"));
}

TEST(EnvironmentTest, ADollarSignThatIsLeftAtTheEndIsAVariableToo) {
    Variable v("QN_V", "v");
    EXPECT_EQ("(null)", replaced("$QN_V$"));
}

TEST(EnvironmentTest, AnUnsetVariableGivesNull) {
    Variable v("QN_V", "v");
    Variable unset("QN_UNSET", nullptr);
    EXPECT_EQ("(null)", replaced("$QN_UNSET/x"));
    EXPECT_EQ("(null)", replaced("$QN_V/$QN_UNSET/x"));
}

TEST(EnvironmentTest, AnEmptyVariableIsSet) {
    Variable v("QN_V", "");
    EXPECT_EQ("/x", replaced("$QN_V/x"));
}

TEST(EnvironmentTest, TextWithoutVariablesIsCopied) {
    EXPECT_EQ("a/b c", replaced("a/b c"));
    EXPECT_EQ("", replaced(""));
}

TEST(EnvironmentTest, ValuesAreNotExpandedAgain) {
    Variable v("QN_V", "$QN_W/~");
    EXPECT_EQ("$QN_W/~/x", replaced("$QN_V/x"));
}

TEST(EnvironmentTest, SeveralVariables) {
    Variable v("QN_V", "v");
    Variable w("QN_W", "long value");
    EXPECT_EQ("v/long value v/", replaced("$QN_V/$QN_W $QN_V/"));
}

TEST(EnvironmentTest, NullGivesNull) { EXPECT_EQ(nullptr, environmentVariableExtendedName(nullptr, 1000)); }

TEST(EnvironmentTest, TheBlockHasTheSizeThatWasAskedFor) {
    char* text = environmentVariableExtendedName("a", 5000);
    ASSERT_NE(nullptr, text);
    EXPECT_GE(malloc_usable_size(text), 5000u);
    std::free(text);
}

TEST(EnvironmentTest, ASizeThatJustFitsEverything) {
    Variable v("QN_V", "1234");
    EXPECT_EQ("1234/x", replaced("$QN_V/x", 7));
    EXPECT_EQ("", replaced("", 1));
}

#ifndef MORVAQNDS_CHECKED
TEST(EnvironmentTest, WhatDoesNotFitTheSizeIsThereAllTheSame) {
    std::string value(100000, 'v');
    std::string name = "QN_" + std::string(5000, 'N');
    Variable v(name.c_str(), value.c_str());
    std::string text = "a/$" + name + "/$" + name + " b";
    for (unsigned size : {0u, 1u, 2u, 100u, 99999u}) {
        EXPECT_EQ("a/" + value + "/" + value + " b", replaced(text.c_str(), size)) << size;
        EXPECT_EQ("abc", replaced("abc", size)) << size;
        EXPECT_EQ("", replaced("", size)) << size;
    }
}

TEST_F(SymbolicLinkTest, ATargetOfSizeBytesAndMoreIsCutToSizeBytes) {
    std::string target_ = "some/where";
    link(target_);
    for (unsigned size = 1; size <= 10; ++size) EXPECT_EQ(target_.substr(0, size), target(size)) << size;
}

TEST(PathExpandTildeTest, NamesOfUsersOfAnyLength) {
    for (std::size_t length : {256u, 1000u, 1001u, 100000u}) {
        std::string path = "~" + std::string(length, 'u') + "/x";
        EXPECT_EQ(path, expanded(path.c_str())) << length;
    }
}

TEST(PathDirnameTest, NullCountsAsTheEmptyText) { EXPECT_EQ(".", dirOf(nullptr)); }
#else
TEST(PathDeathTest, TheFolderOfNull) {
    EXPECT_EXIT(pathdirname(nullptr), testing::KilledBySignal(SIGABRT), "^pathdirname: null path\n$");
}

TEST(PathDeathTest, ANameOfMoreThan255Bytes) {
    std::string path = "~" + std::string(256, 'u') + "/x";
    EXPECT_EXIT(pathexpandtilde(path.c_str()), testing::KilledBySignal(SIGABRT),
                "^pathexpandtilde: user name of 256 bytes\n$");
}

typedef SymbolicLinkTest SymbolicLinkDeathTest;

TEST_F(SymbolicLinkDeathTest, ATargetOfSizeBytesEndsTheProcess) {
    link("some/where");
    EXPECT_EXIT(symbolicLinkExtendedName(link_.c_str(), 10), testing::KilledBySignal(SIGABRT),
                "^symbolicLinkExtendedName: target of .*/link does not fit 10 bytes\n$");
}

TEST(PathDeathTest, AResultThatDoesNotFitItsSize) {
    Variable v("QN_V", "1234");
    EXPECT_EXIT(environmentVariableExtendedName("$QN_V/x", 6), testing::KilledBySignal(SIGABRT),
                "^environmentVariableExtendedName: text of 6 characters does not fit 6 bytes\n$");
    EXPECT_EXIT(environmentVariableExtendedName("", 0), testing::KilledBySignal(SIGABRT),
                "^environmentVariableExtendedName: text of 0 characters does not fit 0 bytes\n$");
}

TEST(PathDeathTest, ANameThatDoesNotFitTheSize) {
    Variable v("QN_V", "");
    EXPECT_EXIT(environmentVariableExtendedName("$QN_V/", 4), testing::KilledBySignal(SIGABRT),
                "^environmentVariableExtendedName: text of 4 characters does not fit 4 bytes\n$");
}
#endif

// ---- qnPath ----

std::string split(const qnPath& path, std::string& leaf) {
    qnStr directory("old directory"), name("old leaf");
    EXPECT_EQ(0, path.split(directory, name));
    EXPECT_EQ(std::strlen(name.text()), name.length());
    EXPECT_EQ(std::strlen(directory.text()), directory.length());
    EXPECT_TRUE(path.leaf() == name);
    EXPECT_TRUE(path.directory() == directory);
    leaf = name.text();
    return directory.text();
}

struct Split {
    const char* path;
    const char* directory;
    const char* leaf;
};

void expectSplits(std::initializer_list<Split> splits) {
    for (const Split& expected : splits) {
        std::string leaf;
        EXPECT_EQ(expected.directory, split(qnPath(expected.path), leaf)) << expected.path;
        EXPECT_EQ(expected.leaf, leaf) << expected.path;
    }
}

TEST(PathTest, APathIsSplitAtItsLastSlashWhichIsDropped) {
    expectSplits({{"/etc/hosts", "/etc", "hosts"}, {"a/b/c", "a/b", "c"}, {"a//b", "a/", "b"}, {"/a", "", "a"}});
}

TEST(PathTest, APathWithoutASlashHasAnEmptyDirectory) { expectSplits({{"hosts", "", "hosts"}, {"a", "", "a"}}); }

TEST(PathTest, APathThatEndsInASlashHasAnEmptyLeaf) {
    expectSplits({{"a/b/", "a/b", ""}, {"/", "", ""}, {"//", "/", ""}});
}

TEST(PathTest, TheEmptyPathHasEmptyPartsAndTheSharedBufferIsNotWritten) {
    expectSplits({{"", "", ""}});
    EXPECT_EQ(0, qnStr::emptyString);
    qnStr directory, leaf;
    EXPECT_EQ(0, qnPath("").split(directory, leaf));
    EXPECT_EQ(0u, directory.length());
    EXPECT_EQ(0u, leaf.length());
}

TEST(PathTest, APathIsMadeFromTextOrAString) {
    EXPECT_STREQ("a/b", qnPath("a/b").text());
    EXPECT_STREQ("a/b", qnPath(qnStr("a/b")).text());
    EXPECT_EQ(0u, qnPath(static_cast<const char*>(nullptr)).length());
    qnPath path = "a/b";
    path.append("/c");
    EXPECT_STREQ("c", path.leaf().text());
}

TEST(PathTest, LongPaths) {
    std::string directory(100000, 'd');
    std::string leaf;
    EXPECT_EQ(directory, split(qnPath((directory + "/leaf").c_str()), leaf));
    EXPECT_EQ("leaf", leaf);
}

TEST(PathTest, APathIsReadUpToItsFirstNul) {
    std::string leaf;
    EXPECT_EQ("a", split(qnPath(qnStr("a/b\0c/d", 7)), leaf));
    EXPECT_EQ("b", leaf);
}

TEST(PathTest, TheResultsMayBeThePathItself) {
    qnPath path("/etc/hosts");
    qnStr other;
    EXPECT_EQ(0, path.split(path, other));
    EXPECT_STREQ("/etc", path.text());
    EXPECT_STREQ("hosts", other.text());
    path = "/etc/hosts";
    EXPECT_EQ(0, path.split(other, path));
    EXPECT_STREQ("/etc", other.text());
    EXPECT_STREQ("hosts", path.text());
}

TEST(PathTest, OneStringForBothEndsAsTheLeaf) {
    qnStr both;
    EXPECT_EQ(0, qnPath("/etc/hosts").split(both, both));
    EXPECT_STREQ("hosts", both.text());
}

// ---- path_strip_leaf ----

TEST(PathServiceTest, CapacitiesCountTheTerminator) {
    char directory[5] = "xxxx";
    char leaf[6] = "xxxxx";
    EXPECT_EQ(0, path_strip_leaf("/etc/hosts", 5, directory, 6, leaf));
    EXPECT_STREQ("/etc", directory);
    EXPECT_STREQ("hosts", leaf);
}

TEST(PathServiceTest, WhatDoesNotFitIsCut) {
    char directory[8] = "xxxxxxx";
    char leaf[8] = "yyyyyyy";
    EXPECT_EQ(-1, path_strip_leaf("/etc/hosts", 4, directory, 6, leaf));
    EXPECT_STREQ("/et", directory);
    EXPECT_STREQ("hosts", leaf);
    EXPECT_EQ(-1, path_strip_leaf("/etc/hosts", 5, directory, 1, leaf));
    EXPECT_STREQ("/etc", directory);
    EXPECT_STREQ("", leaf);
}

TEST(PathServiceTest, NothingIsWrittenWithoutRoom) {
    char directory = 'x';
    char leaf = 'y';
    EXPECT_EQ(-1, path_strip_leaf("", 0, &directory, 0, &leaf));
    EXPECT_EQ('x', directory);
    EXPECT_EQ('y', leaf);
}

TEST(PathServiceTest, NullIsTheEmptyPath) {
    char directory = 'x';
    char leaf = 'y';
    EXPECT_EQ(0, path_strip_leaf(nullptr, 1, &directory, 1, &leaf));
    EXPECT_EQ(0, directory);
    EXPECT_EQ(0, leaf);
}

}  // namespace PathTest
