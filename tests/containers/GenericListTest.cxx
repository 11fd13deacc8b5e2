#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "GenericList.h"
#include "containers/ListWalkRig.h"

namespace GenericListTest {

static_assert(!std::is_copy_assignable<GenericList>::value, "lists are not assigned");
static_assert(std::is_copy_constructible<GenericList>::value, "but they are copied");
static_assert(!std::is_copy_constructible<GenericNode>::value, "a copied node would cut its neighbours' links");
static_assert(!std::is_copy_assignable<GenericNode>::value, "a copied node would cut its neighbours' links");
static_assert(sizeof(int) == 4, "counts and indices have 32 bits");

#if defined(__i386__) || defined(__powerpc__)
static_assert(sizeof(GenericList) == 20 && offsetof(GenericList, count) == 0, "");
static_assert(offsetof(GenericList, cursorIndex) == 4 && offsetof(GenericList, head) == 8, "");
static_assert(offsetof(GenericList, tail) == 12 && offsetof(GenericList, cursor) == 16, "");
static_assert(sizeof(GenericNode) == 12 && offsetof(GenericNode, prev) == 0, "");
static_assert(offsetof(GenericNode, next) == 4 && offsetof(GenericNode, item) == 8, "");
#endif

const char* const boundsMessage = "^List bounds violation in ../GenericList.cxx aborting ...\n$";
const char* const underflowMessage = "^List underflow in ../GenericList.cxx aborting ...\n$";

// The items are the letters of this text, so that a list reads as a string.
char letters[] = "abcdefghijklmnopqrstuvwxyz";

void* letter(char c) { return &letters[c - 'a']; }

void fill(GenericList& list, const char* text) {
    for (; *text != '\0'; ++text) list.append(letter(*text));
}

std::string forwardText(const GenericList& list) {
    std::string text;
    for (const GenericNode* node = list.head; node != nullptr; node = node->next)
        text += *static_cast<char*>(node->item);
    return text;
}

std::string backwardText(const GenericList& list) {
    std::string text;
    for (const GenericNode* node = list.tail; node != nullptr; node = node->prev)
        text += *static_cast<char*>(node->item);
    return text;
}

char cursorLetter(const GenericList& list) { return *static_cast<char*>(list.cursor->item); }

void expectList(const GenericList& list, const std::string& text) {
    EXPECT_EQ(text, forwardText(list));
    EXPECT_EQ(std::string(text.rbegin(), text.rend()), backwardText(list));
    EXPECT_EQ(static_cast<int>(text.size()), list.count);
}

void expectCursor(const GenericList& list, int index, char item) {
    EXPECT_EQ(index, list.cursorIndex);
    ASSERT_NE(nullptr, list.cursor);
    EXPECT_EQ(item, cursorLetter(list));
}

TEST(GenericListTest, AnEmptyListIsAllZero) {
    GenericList list;
    EXPECT_EQ(0, list.count);
    EXPECT_EQ(0, list.cursorIndex);
    EXPECT_EQ(nullptr, list.head);
    EXPECT_EQ(nullptr, list.tail);
    EXPECT_EQ(nullptr, list.cursor);
}

TEST(GenericListTest, AppendAddsBehindTheTailAndPutsTheCursorOnTheNewNode) {
    GenericList list;
    list.append(letter('a'));
    expectList(list, "a");
    expectCursor(list, 0, 'a');
    list.append(letter('b'));
    list.append(letter('c'));
    expectList(list, "abc");
    expectCursor(list, 2, 'c');
    EXPECT_EQ(list.tail, list.cursor);
}

TEST(GenericListTest, PrependAddsBeforeTheHeadAndPutsTheCursorOnTheNewNode) {
    GenericList list;
    list.prepend(letter('a'));
    expectList(list, "a");
    expectCursor(list, 0, 'a');
    list.append(letter('b'));
    list.prepend(letter('c'));
    expectList(list, "cab");
    expectCursor(list, 0, 'c');
}

TEST(GenericListTest, InsertAtPutsTheItemAtTheIndexAndTheCursorOnIt) {
    GenericList list;
    fill(list, "abcd");
    list.insertAt(2, letter('x'));
    expectList(list, "abxcd");
    expectCursor(list, 2, 'x');
    list.insertAt(1, letter('y'));
    expectList(list, "aybxcd");
    expectCursor(list, 1, 'y');
    list.insertAt(5, letter('z'));
    expectList(list, "aybxczd");
    expectCursor(list, 5, 'z');
}

TEST(GenericListTest, InsertAtZeroPrependsAndInsertAtCountAppends) {
    GenericList list;
    list.insertAt(0, letter('b'));
    expectList(list, "b");
    list.insertAt(0, letter('a'));
    expectList(list, "ab");
    expectCursor(list, 0, 'a');
    list.insertAt(2, letter('c'));
    expectList(list, "abc");
    expectCursor(list, 2, 'c');
}

TEST(GenericListTest, FindItemAndFindNodeAnswerEveryIndex) {
    GenericList list;
    fill(list, "abcdefg");
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(&letters[i], list.findItem(i));
        EXPECT_EQ(&letters[i], list.findItem(static_cast<long>(i)));
        EXPECT_EQ(&letters[i], list.findNode(i)->item);
    }
    const GenericList& constant = list;
    EXPECT_EQ(&letters[3], constant.findItem(3));
}

TEST(GenericListTest, NullItemsAreKept) {
    GenericList list;
    list.append(nullptr);
    list.append(letter('a'));
    EXPECT_EQ(nullptr, list.findItem(0));
    EXPECT_EQ(nullptr, list.remove(static_cast<void*>(nullptr)));
    expectList(list, "a");
}

// ---- The nearest-start walk ----

using Rig = ListWalkRig::Rig<GenericList, GenericNode, ListWalkRig::GenericNodes>;

TEST(GenericListTest, TheEndsAndTheCursorAreAnsweredWithoutMovingTheCursor) {
    Rig rig(10, 4);
    EXPECT_EQ("head+0", rig.find(0));
    EXPECT_EQ("unmoved", rig.cursorState());
    EXPECT_EQ("tail-0", rig.find(9));
    EXPECT_EQ("unmoved", rig.cursorState());
    EXPECT_EQ("cursor+0", rig.find(4));
    EXPECT_EQ("unmoved", rig.cursorState());
}

TEST(GenericListTest, AnIndexBelowTheCursorIsWalkedToFromTheHeadWhenThatIsShorter) {
    // The cursor at 5: index 2 is two steps from the head and three from the cursor.
    Rig rig(10, 5);
    EXPECT_EQ("head+2", rig.find(2));
    EXPECT_EQ("at 2", rig.cursorState());
}

TEST(GenericListTest, AnIndexBelowTheCursorIsWalkedToFromTheCursorWhenThatIsShorterOrTied) {
    EXPECT_EQ("cursor-2", Rig(10, 5).find(3));
    EXPECT_EQ("cursor-2", Rig(10, 4).find(2));
    EXPECT_EQ("cursor-1", Rig(10, 2).find(1));
}

TEST(GenericListTest, AnIndexAboveTheCursorIsWalkedToFromTheCursorWhenThatIsShorter) {
    // Ten items, the cursor at 3: index 5 is two steps from the cursor and four from the tail.
    Rig rig(10, 3);
    EXPECT_EQ("cursor+2", rig.find(5));
    EXPECT_EQ("at 5", rig.cursorState());
}

TEST(GenericListTest, AnIndexAboveTheCursorIsWalkedToFromTheTailWhenThatIsShorterOrTied) {
    EXPECT_EQ("tail-2", Rig(10, 3).find(7));
    EXPECT_EQ("tail-3", Rig(10, 3).find(6));
    EXPECT_EQ("tail-1", Rig(10, 7).find(8));
}

TEST(GenericListTest, EveryWalkInListsOfUpToNineItemsTakesTheStatedRoute) { ListWalkRig::checkAllRoutes<Rig>(9); }

TEST(GenericListTest, AscendingIndicesTakeOneStepEach) {
    // After the first call every step goes from the cursor, until the tail is as near.
    Rig rig(8, 1);
    for (int index = 2; index <= 5; ++index) {
        EXPECT_EQ("cursor+1", rig.find(index));
        rig.reset(8, index);
    }
    EXPECT_EQ("tail-1", rig.find(6));
}

// ---- Removal ----

TEST(GenericListTest, RemoveByNodeReturnsTheItemAndPutsTheCursorBackToTheHead) {
    GenericList list;
    fill(list, "abcd");
    EXPECT_EQ(letter('c'), list.remove(list.findNode(2)));
    expectList(list, "abd");
    expectCursor(list, 0, 'a');
    EXPECT_EQ(letter('a'), list.remove(list.head));
    expectList(list, "bd");
    expectCursor(list, 0, 'b');
    EXPECT_EQ(letter('d'), list.remove(list.tail));
    expectList(list, "b");
    expectCursor(list, 0, 'b');
    EXPECT_EQ(letter('b'), list.remove(list.head));
    expectList(list, "");
    EXPECT_EQ(nullptr, list.cursor);
    EXPECT_EQ(nullptr, list.head);
    EXPECT_EQ(nullptr, list.tail);
    EXPECT_EQ(0, list.cursorIndex);
}

TEST(GenericListTest, RemoveByItemTakesTheFirstNodeThatHoldsIt) {
    GenericList list;
    fill(list, "abcbd");
    EXPECT_EQ(letter('b'), list.remove(letter('b')));
    expectList(list, "acbd");
    EXPECT_EQ(letter('b'), list.remove(letter('b')));
    expectList(list, "acd");
    EXPECT_EQ(nullptr, list.remove(letter('b')));
    expectList(list, "acd");
}

TEST(GenericListTest, RemoveOfAnUnknownItemLeavesTheCursor) {
    GenericList list;
    fill(list, "abc");
    EXPECT_EQ(nullptr, list.remove(letter('z')));
    expectCursor(list, 2, 'c');
}

TEST(GenericListTest, RemoveByItemOnAnEmptyListGivesNull) {
    GenericList list;
    EXPECT_EQ(nullptr, list.remove(letter('a')));
}

TEST(GenericListTest, RemoveByIndexReturnsTheItem) {
    GenericList list;
    fill(list, "abcd");
    EXPECT_EQ(letter('b'), list.remove(1L));
    EXPECT_EQ(letter('a'), list.remove(0));
    EXPECT_EQ(letter('d'), list.remove(1U));
    expectList(list, "c");
}

TEST(GenericListTest, ClearEmptiesAndTheListCanBeUsedAgain) {
    GenericList list;
    fill(list, "abc");
    list.clear();
    expectList(list, "");
    EXPECT_EQ(nullptr, list.cursor);
    EXPECT_EQ(0, list.cursorIndex);
    list.clear();
    fill(list, "xy");
    expectList(list, "xy");
}

TEST(GenericListTest, ACopyHoldsTheSameItemsInNodesOfItsOwn) {
    GenericList list;
    fill(list, "abc");
    list.findItem(1);
    GenericList copy(list);
    expectList(copy, "abc");
    expectCursor(copy, 2, 'c');
    expectCursor(list, 1, 'b');
    copy.remove(0);
    expectList(list, "abc");
    GenericList copyOfEmpty((GenericList()));
    expectList(copyOfEmpty, "");
}

TEST(GenericListTest, ADestroyedNodeJoinsItsNeighbours) {
    GenericNode first(letter('a'));
    GenericNode last(letter('c'));
    {
        GenericNode middle(letter('b'));
        middle.prev = &first;
        middle.next = &last;
        first.next = &middle;
        last.prev = &middle;
    }
    EXPECT_EQ(&last, first.next);
    EXPECT_EQ(&first, last.prev);
    first.next = nullptr;
    last.prev = nullptr;
}

TEST(GenericListTest, RandomChangesAgreeWithAVector) {
    GenericList list;
    std::vector<void*> model;
    unsigned state = 12345;
    const auto draw = [&state](std::size_t below) {
        state = state * 1664525U + 1013904223U;
        return static_cast<long>((state >> 8) % below);
    };
    for (int step = 0; step < 20000; ++step) {
        void* item = &letters[draw(26)];
        const long place = draw(model.size() + 1);
        switch (draw(6)) {
            case 0: list.append(item), model.push_back(item); break;
            case 1: list.prepend(item), model.insert(model.begin(), item); break;
            case 2: list.insertAt(place, item), model.insert(model.begin() + place, item); break;
            case 3:
                if (place == static_cast<long>(model.size())) break;
                EXPECT_EQ(model[static_cast<std::size_t>(place)], list.remove(place));
                model.erase(model.begin() + place);
                break;
            default:
                if (place == static_cast<long>(model.size())) break;
                ASSERT_EQ(model[static_cast<std::size_t>(place)], list.findItem(place)) << "step " << step;
        }
        ASSERT_EQ(static_cast<int>(model.size()), list.count);
        if (list.count == 0) continue;
        const GenericNode* atCursor = list.head;
        for (int i = 0; i < list.cursorIndex; ++i) atCursor = atCursor->next;
        ASSERT_EQ(atCursor, list.cursor) << "step " << step;
    }
}

// ---- The two messages ----

TEST(GenericListDeathTest, FindItemAtCountIsABoundsViolation) {
    GenericList list;
    fill(list, "abc");
    EXPECT_EXIT(list.findItem(3), testing::KilledBySignal(SIGABRT), boundsMessage);
    EXPECT_EXIT(list.findItem(3L), testing::KilledBySignal(SIGABRT), boundsMessage);
    EXPECT_EXIT(list.findNode(3), testing::KilledBySignal(SIGABRT), boundsMessage);
}

TEST(GenericListDeathTest, ANegativeIndexIsABoundsViolation) {
    GenericList list;
    fill(list, "abc");
    EXPECT_EXIT(list.findItem(-1), testing::KilledBySignal(SIGABRT), boundsMessage);
    EXPECT_EXIT(list.findNode(std::numeric_limits<long>::min()), testing::KilledBySignal(SIGABRT), boundsMessage);
    EXPECT_EXIT(list.insertAt(-1, nullptr), testing::KilledBySignal(SIGABRT), boundsMessage);
    EXPECT_EXIT(list.remove(-1L), testing::KilledBySignal(SIGABRT), boundsMessage);
}

TEST(GenericListDeathTest, InsertAtPastCountIsABoundsViolation) {
    GenericList list;
    EXPECT_EXIT(list.insertAt(1, nullptr), testing::KilledBySignal(SIGABRT), boundsMessage);
    fill(list, "abc");
    EXPECT_EXIT(list.insertAt(4, nullptr), testing::KilledBySignal(SIGABRT), boundsMessage);
}

TEST(GenericListDeathTest, AnyIndexOfAnEmptyListIsABoundsViolation) {
    GenericList list;
    EXPECT_EXIT(list.findItem(0), testing::KilledBySignal(SIGABRT), boundsMessage);
}

TEST(GenericListDeathTest, RemoveByIndexOnAnEmptyListIsABoundsViolation) {
    GenericList list;
    EXPECT_EXIT(list.remove(0L), testing::KilledBySignal(SIGABRT), boundsMessage);
}

TEST(GenericListDeathTest, RemoveByNodeOnAnEmptyListIsAnUnderflow) {
    GenericList list;
    GenericNode stray(nullptr);
    EXPECT_EXIT(list.remove(&stray), testing::KilledBySignal(SIGABRT), underflowMessage);
    EXPECT_EXIT(list.remove(static_cast<GenericNode*>(nullptr)), testing::KilledBySignal(SIGABRT), underflowMessage);
}

TEST(GenericListDeathTest, MoreItemsThanACountCanHoldEndTheProcess) {
    GenericList list;
    list.count = std::numeric_limits<int>::max();
    EXPECT_EXIT(list.append(nullptr), testing::KilledBySignal(SIGABRT),
                "^GenericList::append: more than 2147483647 items\n$");
    list.count = 0;
}

#ifdef MORVAQNDS_CHECKED
TEST(GenericListDeathTest, CheckedRemoveOfANodeOfAnotherList) {
    GenericList list;
    fill(list, "abc");
    GenericNode stray(nullptr);
    EXPECT_EXIT(list.remove(&stray), testing::KilledBySignal(SIGABRT),
                "^GenericList::remove: node 0x[0-9a-f]+ is not in the list\n$");
}
#endif

}  // namespace GenericListTest
