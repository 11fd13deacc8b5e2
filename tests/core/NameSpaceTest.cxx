#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "NameSpace.h"

namespace NameSpaceTest {

static_assert(!std::is_copy_assignable<NameSpace>::value, "name spaces are not assigned");
static_assert(!std::is_copy_constructible<NameSpace>::value, "two name spaces would free one tree");

#if defined(__i386__) || defined(__powerpc__)
static_assert(sizeof(NameSpace) == 28 && offsetof(NameSpace, noAtom) == 0 && offsetof(NameSpace, lastAtom) == 4, "");
static_assert(offsetof(NameSpace, root) == 8 && offsetof(NameSpace, capacity) == 12, "");
static_assert(offsetof(NameSpace, table) == 16 && offsetof(NameSpace, explicitAtoms) == 20, "");
static_assert(offsetof(NameSpace, firstDynamic) == 24, "");
static_assert(sizeof(NameSpace::Node) == 20 && offsetof(NameSpace::Node, left) == 0, "");
static_assert(offsetof(NameSpace::Node, right) == 4 && offsetof(NameSpace::Node, atom) == 8, "");
static_assert(offsetof(NameSpace::Node, hash) == 12 && offsetof(NameSpace::Node, name) == 16, "");
#endif

int internNothing(NameSpace*) { return 0; }

unsigned lengthOf(const char* name) { return static_cast<unsigned>(std::strlen(name)); }

/** Creates `name` with a number of the caller's. */
unsigned long number(NameSpace& names, unsigned long atom, const char* name) {
    return names.makeAtom(atom, name, lengthOf(name), 1);
}

// ---- Construction ----

TEST(NameSpaceTest, AFreshNameSpaceHas100EmptySlotsAndNoTree) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(0UL, names.noAtom);
    EXPECT_EQ(0UL, names.lastAtom);
    EXPECT_EQ(nullptr, names.root);
    EXPECT_EQ(100U, names.capacity);
    EXPECT_EQ(0, names.explicitAtoms);
    EXPECT_EQ(1UL, names.firstDynamic);
    for (unsigned slot = 0; slot < 100; ++slot) EXPECT_EQ(nullptr, names.table[slot]);
}

TEST(NameSpaceTest, TheKindOfNumberingIsKeptAsGiven) {
    NameSpace names(internNothing, 7);
    EXPECT_EQ(7, names.explicitAtoms);
}

TEST(NameSpaceTest, WithoutAnInitialisationFunctionThereAreNoFirstNames) {
    NameSpace names(nullptr, 0);
    EXPECT_EQ(1UL, names.makeAtom("a", 1));
}

TEST(NameSpaceTest, WhileItIsInitialisedTheNameSpaceNumbersTheAtomsAndNothingIsDynamic) {
    static int explicitDuring;
    static unsigned long dynamicDuring, first, second;
    NameSpace names(
        [](NameSpace* space) {
            explicitDuring = space->explicitAtoms;
            dynamicDuring = space->firstDynamic;
            first = space->makeAtom("first", 1);
            second = space->makeAtom("second", 1);
            return 0;
        },
        1);
    EXPECT_EQ(0, explicitDuring);
    EXPECT_EQ(0UL, dynamicDuring);
    EXPECT_EQ(1UL, first);
    EXPECT_EQ(2UL, second);
    EXPECT_EQ(1, names.explicitAtoms);
    EXPECT_EQ(3UL, names.firstDynamic);
    EXPECT_EQ(2UL, names.lastAtom);
}

const char* const staticName = "static";
char ownText[] = "own text";

int internStatic(NameSpace* names) { return names->makeAtom(staticName, 1) == 1 ? 0 : 1; }

TEST(NameSpaceTest, NamesOfTheInitialisationFunctionAreKeptByPointerAndNotFreed) {
    {
        NameSpace names(internStatic, 0);
        EXPECT_EQ(staticName, names.nameForAtom(1));
    }
    EXPECT_STREQ("static", staticName);
}

TEST(NameSpaceTest, LaterNamesAreCopied) {
    NameSpace names(internStatic, 0);
    EXPECT_EQ(2UL, names.makeAtom(ownText, 1));
    EXPECT_NE(ownText, names.nameForAtom(2));
    ownText[0] = 'X';
    EXPECT_STREQ("own text", names.nameForAtom(2));
    ownText[0] = 'o';
}

TEST(NameSpaceTest, ACopyHasJustTheGivenBytesAndANul) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("abcdef", 3, 1));
    EXPECT_STREQ("abc", names.nameForAtom(1));
    EXPECT_EQ(1UL, names.makeAtom("abc", 0));
    EXPECT_EQ(0UL, names.makeAtom("abcdef", 0));
    const char unterminated[] = {'x', 'y'};
    EXPECT_EQ(2UL, names.makeAtom(unterminated, 2, 1));
    EXPECT_STREQ("xy", names.nameForAtom(2));
}

TEST(NameSpaceTest, ANameInternedShorterByTheInitialisationFunctionKeepsItsLongerText) {
    static const char* const longer = "abc";
    NameSpace names([](NameSpace* space) { return space->makeAtom(longer, 2, 1) == 1 ? 0 : 1; }, 0);
    EXPECT_EQ(longer, names.nameForAtom(1));
    // Its hash is that of "ab", its text "abc": "ab" is a proper prefix of that and goes left, "abc" has another hash.
    EXPECT_EQ(0UL, names.makeAtom("ab", 0));
    EXPECT_EQ(0UL, names.makeAtom("abc", 0));
    EXPECT_EQ(2UL, names.makeAtom("ab", 1));
    EXPECT_EQ(names.table[2], names.root->left);
}

// ---- Automatic numbering ----

TEST(NameSpaceTest, NewNamesGetAscendingNumbersAndKnownOnesTheirOwn) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("width", 1));
    EXPECT_EQ(2UL, names.makeAtom("height", 1));
    EXPECT_EQ(3UL, names.makeAtom("depth", 1));
    EXPECT_EQ(2UL, names.makeAtom("height", 1));
    EXPECT_EQ(2UL, names.makeAtom("height", 0));
    EXPECT_EQ(3UL, names.lastAtom);
    EXPECT_STREQ("height", names.nameForAtom(2));
}

TEST(NameSpaceTest, ALookupOfAnUnknownNameGivesNoAtomAndCreatesNothing) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(0UL, names.makeAtom("width", 0));
    EXPECT_EQ(0UL, names.makeAtom("width", 5, 0));
    EXPECT_EQ(0UL, names.makeAtom(9UL, "width", 5, 0));
    EXPECT_EQ(0UL, names.internAtom(9, "width", 5, 0));
    EXPECT_EQ(nullptr, names.root);
    EXPECT_EQ(0UL, names.lastAtom);
}

TEST(NameSpaceTest, AnyCreateOtherThanZeroCreates) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("a", -1));
    EXPECT_EQ(2UL, names.makeAtom("b", 256));
}

TEST(NameSpaceTest, TheEmptyNameIsANameLikeAnyOther) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("", 1));
    EXPECT_EQ(0UL, names.root->hash);
    EXPECT_STREQ("", names.nameForAtom(1));
    EXPECT_EQ(1UL, names.makeAtom("xyz", 0, 1));
}

TEST(NameSpaceTest, ANameCanBeMadeFromTheNameOfAnAtom) {
    NameSpace names(internNothing, 0);
    names.makeAtom("abcdef", 1);
    EXPECT_EQ(2UL, names.makeAtom(names.nameForAtom(1) + 2, 1));
    EXPECT_STREQ("cdef", names.nameForAtom(2));
}

TEST(NameSpaceTest, ValidAtomIsFalseForNoAtomAndForWhatWasNeverMade) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(0, names.validAtom(0));
    EXPECT_EQ(0, names.validAtom(1));
    names.makeAtom("a", 1);
    EXPECT_EQ(0, names.validAtom(0));
    EXPECT_EQ(1, names.validAtom(1));
    EXPECT_EQ(0, names.validAtom(2));
    EXPECT_EQ(0, names.validAtom(std::numeric_limits<unsigned long>::max()));
}

TEST(NameSpaceTest, NameForAtomIsNullForWhatWasNeverMade) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(nullptr, names.nameForAtom(0));
    EXPECT_EQ(nullptr, names.nameForAtom(1));
    names.makeAtom("a", 1);
    EXPECT_EQ(nullptr, names.nameForAtom(0));
    EXPECT_EQ(nullptr, names.nameForAtom(2));
    EXPECT_EQ(nullptr, names.nameForAtom(std::numeric_limits<unsigned long>::max()));
}

TEST(NameSpaceTest, TheTableDoublesAtAtom100) {
    NameSpace names(internNothing, 0);
    for (int i = 1; i < 100; ++i) names.makeAtom(std::to_string(i).c_str(), 1);
    EXPECT_EQ(99UL, names.lastAtom);
    EXPECT_EQ(100U, names.capacity);
    EXPECT_EQ(100UL, names.makeAtom("hundred", 1));
    EXPECT_EQ(200U, names.capacity);
    EXPECT_STREQ("57", names.nameForAtom(57));
    for (unsigned slot = 101; slot < 200; ++slot) EXPECT_EQ(nullptr, names.table[slot]);
}

// ---- The hash ----

unsigned long hashOf(const char* bytes, unsigned len) {
    NameSpace names(internNothing, 0);
    names.makeAtom(bytes, len, 1);
    return names.root->hash;
}

TEST(NameSpaceTest, TheHashMixesFromBothEndsToTheMiddle) {
    EXPECT_EQ(0UL, hashOf("", 0));
    // One byte counts from both ends: 27 * 97 + 97.
    EXPECT_EQ(2716UL, hashOf("a", 1));
    EXPECT_EQ(2717UL, hashOf("ab", 2));  // 27 * 97 + 98
    EXPECT_EQ(2743UL, hashOf("ba", 2));  // 27 * 98 + 97
    // 27 * 97 + 99 = 2718, then 27 * (27 * 2718 + 98) + 98.
    EXPECT_EQ(1984166UL, hashOf("abc", 3));
    // 27 * 97 + 100 = 2719, then 27 * (27 * 2719 + 98) + 99.
    EXPECT_EQ(1984896UL, hashOf("abcd", 4));
}

TEST(NameSpaceTest, TheHashTakesBytesAsSigned) {
    // 28 * -1 and 28 * -128, modulo 2^32.
    EXPECT_EQ(4294967268UL, hashOf("\xff", 1));
    EXPECT_EQ(4294963712UL, hashOf("\x80", 1));
    // 27 * 97 - 1.
    EXPECT_EQ(2618UL, hashOf("a\xff", 2));
}

TEST(NameSpaceTest, TheHashIsCutTo32BitsOnEveryMachine) {
    // 28 * 97 = 2716; 2716 * 729 + 28 * 97 = 1982680; 1982680 * 729 + 2716 = 1445376436;
    // 1445376436 * 729 + 2716 = 1053679424560, and less 245 * 2^32 that is 1412437040.
    EXPECT_EQ(1412437040UL, hashOf("aaaaaaaa", 8));
    EXPECT_EQ(1412437040UL, hashOf("aaaaaaa", 7));
}

TEST(NameSpaceTest, TheHashUsesEveryByteOfANameWithNuls) {
    // 27 * 0 + 5 = 5, then 27 * (27 * 5 + 0) + 0.
    EXPECT_EQ(3645UL, hashOf("\0\0\5", 3));
}

// ---- The tree ----

TEST(NameSpaceTest, TheTreeIsOrderedByHashFirst) {
    NameSpace names(internNothing, 0);
    names.makeAtom("b", 1);
    names.makeAtom("a", 1);
    names.makeAtom("c", 1);
    // Its hash is the greatest as an unsigned number.
    names.makeAtom("\xff", 1);
    ASSERT_EQ(names.table[1], names.root);
    EXPECT_EQ(names.table[2], names.root->left);
    EXPECT_EQ(names.table[3], names.root->right);
    EXPECT_EQ(names.table[4], names.root->right->right);
}

// "a", "aa" and "bF" have one hash: 28 * 97 = 27 * 97 + 97 = 27 * 98 + 70 = 2716.

TEST(NameSpaceTest, NamesOfOneHashAreOrderedByTextAndAPrefixComesFirst) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("aa", 1));
    EXPECT_EQ(2UL, names.makeAtom("a", 1));
    EXPECT_EQ(3UL, names.makeAtom("bF", 1));
    EXPECT_EQ(names.table[1], names.root);
    EXPECT_EQ(names.table[2], names.root->left);
    EXPECT_EQ(names.table[3], names.root->right);
    EXPECT_EQ(1UL, names.makeAtom("aa", 0));
    EXPECT_EQ(2UL, names.makeAtom("a", 0));
    EXPECT_EQ(3UL, names.makeAtom("bF", 0));
}

TEST(NameSpaceTest, ANameLongerThanItsPrefixGoesRight) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("a", 1));
    EXPECT_EQ(2UL, names.makeAtom("aa", 1));
    EXPECT_EQ(names.table[2], names.root->right);
    EXPECT_EQ(nullptr, names.root->left);
}

TEST(NameSpaceTest, APrefixOfANameGetsItsOwnAtom) {
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("abc", 1));
    EXPECT_EQ(2UL, names.makeAtom("ab", 1));
    EXPECT_EQ(1UL, names.makeAtom("abc", 0));
    EXPECT_EQ(2UL, names.makeAtom("ab", 0));
}

TEST(NameSpaceTest, TextIsComparedAsUnsignedBytes) {
    // 27 * 100 + 0x80 - 256 = 2572 = 27 * 93 + 61: "d\x80" and "]=" have one hash; 27 * 95 + 7 is a third.
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("]=", 1));
    EXPECT_EQ(2UL, names.makeAtom("d\x80", 1));
    EXPECT_EQ(3UL, names.makeAtom("_\7", 1));
    EXPECT_EQ(names.table[2], names.root->right);
    EXPECT_EQ(names.table[3], names.root->right->left);
}

TEST(NameSpaceTest, NamesAreComparedUpToTheirFirstNul) {
    // The two middle bytes enter the hash of six as 27 * third + fourth: 27 * 2 + 1 = 27 * 1 + 28. The texts are equal
    // up to their NUL, so the second name is the first.
    NameSpace names(internNothing, 0);
    EXPECT_EQ(1UL, names.makeAtom("a\0\2\1\5\6", 6, 1));
    EXPECT_EQ(1UL, names.makeAtom("a\0\1\34\5\6", 6, 1));
    EXPECT_STREQ("a", names.nameForAtom(1));
    EXPECT_EQ(2UL, names.makeAtom("a\0\1\35\5\6", 6, 1));
}

// ---- Explicit numbering ----

TEST(NameSpaceTest, Atom250GrowsTheTableFrom100To400Slots) {
    NameSpace names(internNothing, 1);
    EXPECT_EQ(250UL, number(names, 250, "two hundred and fifty"));
    EXPECT_EQ(400U, names.capacity);
    EXPECT_EQ(250UL, names.lastAtom);
    EXPECT_EQ(nullptr, names.nameForAtom(249));
    EXPECT_EQ(0, names.validAtom(249));
    EXPECT_EQ(1, names.validAtom(250));
    EXPECT_STREQ("two hundred and fifty", names.nameForAtom(250));
    for (unsigned slot = 0; slot < 400; ++slot) EXPECT_EQ(slot == 250, names.table[slot] != nullptr) << slot;
}

TEST(NameSpaceTest, AKnownNameKeepsItsNumberWhateverNumberIsAskedFor) {
    NameSpace names(internNothing, 1);
    EXPECT_EQ(5UL, number(names, 5, "five"));
    EXPECT_EQ(5UL, number(names, 9, "five"));
    EXPECT_EQ(5UL, names.lastAtom);
    EXPECT_EQ(5UL, names.makeAtom("five", 0));
    EXPECT_EQ(5UL, names.makeAtom("five", 4, 0));
}

TEST(NameSpaceTest, LastAtomIsTheHighestNumberNotTheLatest) {
    NameSpace names(internNothing, 1);
    number(names, 50, "fifty");
    number(names, 20, "twenty");
    EXPECT_EQ(50UL, names.lastAtom);
    EXPECT_STREQ("twenty", names.nameForAtom(20));
}

TEST(NameSpaceTest, ANumberGivenTwiceGoesOverToTheNewName) {
    NameSpace names(internNothing, 1);
    number(names, 5, "five");
    EXPECT_EQ(5UL, number(names, 5, "cinq"));
    EXPECT_STREQ("cinq", names.nameForAtom(5));
    EXPECT_EQ(5UL, names.makeAtom("five", 0));
    EXPECT_EQ(5UL, names.makeAtom("cinq", 0));
}

TEST(NameSpaceTest, AtomZeroHasANameButIsNotValid) {
    char* copy = nullptr;
    {
        NameSpace names(internNothing, 1);
        EXPECT_EQ(0UL, number(names, 0, "zero"));
        EXPECT_STREQ("zero", names.nameForAtom(0));
        EXPECT_EQ(0, names.validAtom(0));
        EXPECT_EQ(0UL, names.lastAtom);
        copy = names.table[0]->name;
    }
    // Below firstDynamic, so the name space leaves the copy alone.
    EXPECT_STREQ("zero", copy);
    std::free(copy);
}

TEST(NameSpaceTest, ACopiedNameUnderANumberOfTheInitialisationFunctionIsNotFreed) {
    char* copy = nullptr;
    {
        NameSpace names(internStatic, 1);
        EXPECT_EQ(1UL, number(names, 1, "late"));
        copy = names.table[1]->name;
    }
    EXPECT_STREQ("late", copy);
    std::free(copy);
}

TEST(NameSpaceTest, InternAtomDoesNotAskForTheKindOfNumbering) {
    NameSpace automatic(internNothing, 0);
    EXPECT_EQ(40UL, automatic.internAtom(40, "forty", 5, 1));
    EXPECT_EQ(41UL, automatic.makeAtom("next", 1));
    NameSpace chosen(internNothing, 1);
    EXPECT_EQ(3UL, chosen.internAtom(3, "three", 5, 1));
}

// ---- Freeing ----

// The leak check sees that its destructor frees it.
TEST(NameSpaceTest, FreeAllAtomsKeepsTheTableOfAnEmptyNameSpace) {
    NameSpace names(nullptr, 0);
    ASSERT_EQ(nullptr, names.root);
    const void* table = names.table;
    names.freeAllAtoms();
    EXPECT_EQ(table, names.table);
    EXPECT_EQ(1UL, names.makeAtom("first", 1));
}

TEST(NameSpaceTest, FreeAllAtomsLeavesNoTreeNoTableAndNoAtoms) {
    NameSpace names(internStatic, 0);
    names.makeAtom("later", 1);
    names.freeAllAtoms();
    EXPECT_EQ(nullptr, names.root);
    EXPECT_EQ(nullptr, names.table);
    EXPECT_EQ(0UL, names.lastAtom);
    names.freeAllAtoms();
    EXPECT_EQ(0UL, names.makeAtom("later", 0));
    EXPECT_EQ(0, names.validAtom(0));
    EXPECT_EQ(0, names.validAtom(1));
    EXPECT_EQ(nullptr, names.nameForAtom(0));
    EXPECT_EQ(nullptr, names.nameForAtom(1));
}

TEST(NameSpaceTest, FreeAllAtomsWithoutATreeChangesNothing) {
    NameSpace names(internNothing, 0);
    names.freeAllAtoms();
    ASSERT_NE(nullptr, names.table);
    EXPECT_EQ(1UL, names.makeAtom("a", 1));
}

TEST(NameSpaceTest, FreeAtomTakesASubtreeOutOfTheTreeAndTheTable) {
    NameSpace names(internNothing, 0);
    for (const char* name : {"m", "f", "c", "h", "t"}) names.makeAtom(name, 1);
    names.freeAtom(nullptr);
    names.freeAtom(names.table[2]);
    EXPECT_EQ(nullptr, names.root->left);
    EXPECT_EQ(nullptr, names.nameForAtom(2));
    EXPECT_EQ(nullptr, names.nameForAtom(3));
    EXPECT_EQ(nullptr, names.nameForAtom(4));
    EXPECT_STREQ("t", names.nameForAtom(5));
    EXPECT_EQ(0UL, names.makeAtom("c", 0));
    EXPECT_EQ(6UL, names.makeAtom("c", 1));
    names.freeAtom(names.root);
    EXPECT_EQ(nullptr, names.root);
}

TEST(NameSpaceTest, FreeAtomFindsANodeAmongNamesOfOneHash) {
    for (unsigned long gone = 1; gone <= 3; ++gone) {
        NameSpace names(internNothing, 0);
        for (const char* name : {"aa", "a", "bF"}) names.makeAtom(name, 1);
        names.freeAtom(names.table[gone]);
        EXPECT_EQ(nullptr, names.nameForAtom(gone));
        EXPECT_EQ(gone == 1, names.root == nullptr);
    }
}

// What is not freed is seen by the leak checker; each node's slot of the table is cleared when its turn comes.
TEST(NameSpaceTest, ATreeOfEveryShapeOfSevenNodesIsFreedWhole) {
    std::vector<std::string> order = {"b", "d", "f", "h", "j", "l", "n"};
    do {
        NameSpace names(internNothing, 0);
        for (const std::string& name : order) names.makeAtom(name.c_str(), 1);
        NameSpace::Node* root = names.root;
        names.freeAtom(root);
        for (unsigned long atom = 1; atom <= 7; ++atom) ASSERT_EQ(nullptr, names.nameForAtom(atom));
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(NameSpaceTest, ATreeAMillionNodesDeepIsSearchedAndFreedWithoutRecursion) {
    // Every other node has a hash just below or above that of "a", so that the search for "a" visits all of them.
    NameSpace names(internNothing, 0);
    static char filler[] = "filler";
    NameSpace::Node** link = &names.root;
    for (int depth = 0; depth < 1000000; ++depth) {
        auto* node = new NameSpace::Node();
        node->hash = depth % 2 == 0 ? 2715 : 2717;
        node->name = filler;
        *link = node;
        link = depth % 2 == 0 ? &node->right : &node->left;
    }
    EXPECT_EQ(0UL, names.makeAtom("a", 0));
    EXPECT_EQ(1UL, names.makeAtom("a", 1));
    EXPECT_EQ(names.table[1], *link);
    EXPECT_EQ(1UL, names.makeAtom("a", 0));
    names.freeAllAtoms();
    EXPECT_EQ(nullptr, names.root);
}

TEST(NameSpaceTest, HashSortedNamesMakeAChainThatIsSearchedAndFreed) {
    // Two-byte names c1 c2 have the hash 27 * c1 + c2, which ascends with c1 for one c2, and within 27 values of c2.
    NameSpace names(internNothing, 0);
    unsigned long made = 0;
    for (int first = 1; first < 128; ++first) {
        for (int second = 1; second <= 27; ++second) {
            const char name[] = {static_cast<char>(first), static_cast<char>(second), '\0'};
            ASSERT_EQ(++made, names.makeAtom(name, 1));
        }
    }
    unsigned long depth = 0;
    for (const NameSpace::Node* node = names.root; node != nullptr; node = node->right) {
        ASSERT_EQ(nullptr, node->left);
        ++depth;
    }
    EXPECT_EQ(127UL * 27, depth);
}

TEST(NameSpaceTest, AHundredThousandSortedNamesAreNumberedFoundAndFreed) {
    NameSpace names(internNothing, 0);
    char name[16];
    for (unsigned long i = 1; i <= 100000; ++i) {
        std::snprintf(name, sizeof name, "name%06lu", i);
        ASSERT_EQ(i, names.makeAtom(name, 1));
    }
    for (unsigned long i = 1; i <= 100000; ++i) {
        std::snprintf(name, sizeof name, "name%06lu", i);
        ASSERT_EQ(i, names.makeAtom(name, 0));
        ASSERT_STREQ(name, names.nameForAtom(i));
    }
    // 100 doubled ten times.
    EXPECT_EQ(102400U, names.capacity);
}

// ---- Ends of the process ----

#ifdef MORVAQNDS_CHECKED
const char* const needsNumberMessage =
    "^NameSpace::makeAtom: explicit numbering, but no number for a name of 4 bytes\n$";
const char* const forbidsNumberMessage =
    "^NameSpace::makeAtom: automatic numbering, but number 7 for a name of 4 bytes\n$";
#else
const char* const needsNumberMessage = "^$";
const char* const forbidsNumberMessage = "^$";
#endif

TEST(NameSpaceDeathTest, AFailingInitialisationFunctionEndsTheProcessWithStatus255) {
    EXPECT_EXIT(NameSpace([](NameSpace*) { return 1; }, 0), testing::ExitedWithCode(255), "^$");
    EXPECT_EXIT(NameSpace([](NameSpace*) { return -3; }, 1), testing::ExitedWithCode(255), "^$");
}

TEST(NameSpaceDeathTest, CreatingWithoutANumberInAnExplicitNameSpaceAborts) {
    NameSpace names(internNothing, 1);
    EXPECT_EXIT(names.makeAtom("name", 1), testing::KilledBySignal(SIGABRT), needsNumberMessage);
    EXPECT_EXIT(names.makeAtom("name", 4, 1), testing::KilledBySignal(SIGABRT), needsNumberMessage);
    EXPECT_EQ(0UL, names.makeAtom("name", 0));
}

TEST(NameSpaceDeathTest, CreatingWithoutANumberAbortsEvenForAKnownName) {
    NameSpace names(internNothing, 1);
    number(names, 4, "name");
    EXPECT_EXIT(names.makeAtom("name", 1), testing::KilledBySignal(SIGABRT), needsNumberMessage);
}

TEST(NameSpaceDeathTest, CreatingWithANumberInAnAutomaticNameSpaceAborts) {
    NameSpace names(internNothing, 0);
    EXPECT_EXIT(number(names, 7, "name"), testing::KilledBySignal(SIGABRT), forbidsNumberMessage);
}

TEST(NameSpaceDeathTest, CreatingWithANumberDuringInitialisationAborts) {
    EXPECT_EXIT(NameSpace([](NameSpace* names) { return number(*names, 7, "name") == 7 ? 0 : 1; }, 1),
                testing::KilledBySignal(SIGABRT), forbidsNumberMessage);
}

TEST(NameSpaceDeathTest, AtomErrorAborts) {
    NameSpace names(internNothing, 0);
    EXPECT_EXIT(names.atomError(), testing::KilledBySignal(SIGABRT), "^$");
}

TEST(NameSpaceDeathTest, AnAtomForWhichTheTableWouldPass32BitsAborts) {
    NameSpace names(internNothing, 1);
    // 100 * 2^25 slots are the most that 32 bits can count.
    EXPECT_EXIT(number(names, 3355443200UL, "high"), testing::KilledBySignal(SIGABRT), "^$");
    EXPECT_EXIT(number(names, std::numeric_limits<unsigned long>::max(), "highest"), testing::KilledBySignal(SIGABRT),
                "^$");
}

TEST(NameSpaceDeathTest, CreatingAfterFreeAllAtomsEndsTheProcess) {
    NameSpace names(internStatic, 0);
    names.freeAllAtoms();
    EXPECT_EXIT(names.makeAtom("late", 1), testing::KilledBySignal(SIGABRT),
                "^NameSpace::internAtom: used after freeAllAtoms\n$");
}

}  // namespace NameSpaceTest
