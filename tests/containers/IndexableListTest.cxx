#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "IndexableList.h"
#include "containers/ListWalkRig.h"

namespace IndexableListTest {

static_assert(!std::is_copy_assignable<qnIndexableList>::value, "lists are not assigned");
static_assert(sizeof(int) == 4, "counts and indices have 32 bits");

#if defined(__i386__) || defined(__powerpc__)
static_assert(sizeof(qnIndexableList) == 20 && offsetof(qnIndexableList, head) == 0, "");
static_assert(offsetof(qnIndexableList, tail) == 4 && offsetof(qnIndexableList, cursorIndex) == 8, "");
static_assert(offsetof(qnIndexableList, cursor) == 12 && offsetof(qnIndexableList, count) == 16, "");
static_assert(sizeof(qnLinkItem) == 8 && offsetof(qnLinkItem, next) == 0 && offsetof(qnLinkItem, prev) == 4, "");
#endif

struct Letter : qnLinkItem {
    explicit Letter(char itsName) : name(itsName) {}
    char name;
};

char nameOf(const qnLinkItem* item) { return item != nullptr ? static_cast<const Letter*>(item)->name : '-'; }

std::string chainText(const qnLinkItem* item) {
    std::string text;
    for (; item != nullptr; item = item->next) text += nameOf(item);
    return text;
}

/** A list with letters of its own. */
struct Letters {
    explicit Letters(const char* text) {
        for (; *text != '\0'; ++text) list.append(add(*text));
    }

    Letter* add(char name) {
        letters.emplace_back(name);
        return &letters.back();
    }

    Letter* at(char name) {
        for (Letter& letter : letters) {
            if (letter.name == name) return &letter;
        }
        return nullptr;
    }

    /** Puts the cursor where a walk to `index` leaves it. */
    void moveCursor(int index) {
        list.cursorIndex = index;
        list.cursor = list.head;
        for (int i = 0; i < index; ++i) list.cursor = list.cursor->next;
    }

    std::deque<Letter> letters;
    qnIndexableList list;
};

void expectList(const qnIndexableList& list, const std::string& text) {
    EXPECT_EQ(text, chainText(list.head));
    std::string backward;
    for (const qnLinkItem* item = list.tail; item != nullptr; item = item->prev) backward += nameOf(item);
    EXPECT_EQ(std::string(text.rbegin(), text.rend()), backward);
    EXPECT_EQ(static_cast<int>(text.size()), list.count);
}

void expectCursor(const qnIndexableList& list, int index, char name) {
    EXPECT_EQ(index, list.cursorIndex);
    EXPECT_EQ(name, nameOf(list.cursor));
}

void expectAllZero(const qnIndexableList& list) {
    EXPECT_EQ(nullptr, list.head);
    EXPECT_EQ(nullptr, list.tail);
    EXPECT_EQ(nullptr, list.cursor);
    EXPECT_EQ(0, list.cursorIndex);
    EXPECT_EQ(0, list.count);
}

TEST(IndexableListTest, AnEmptyListIsAllZeroAndAnItemStartsWithoutLinks) {
    expectAllZero(qnIndexableList());
    qnLinkItem item;
    EXPECT_EQ(nullptr, item.next);
    EXPECT_EQ(nullptr, item.prev);
}

TEST(IndexableListTest, AnAdoptedChainIsCountedAndItsCursorStandsOnTheHead) {
    Letter a('a'), b('b'), c('c');
    a.next = &b;
    b.next = &c;
    b.prev = &a;
    c.prev = &b;
    qnIndexableList list(&a);
    expectList(list, "abc");
    expectCursor(list, 0, 'a');
    EXPECT_EQ(&a, list.head);
    EXPECT_EQ(&c, list.tail);
}

TEST(IndexableListTest, AnAdoptedChainThatWasLinkedForwardOnlyCanBeWalkedBackward) {
    Letter a('a'), b('b'), c('c'), d('d');
    a.next = &b;
    b.next = &c;
    c.next = &d;
    qnIndexableList list(&a);
    EXPECT_EQ('c', nameOf(list.findLink(2)));
    expectList(list, "abcd");
}

TEST(IndexableListTest, AnAdoptedChainOfNothingIsAnEmptyList) {
    expectAllZero(qnIndexableList(static_cast<qnLinkItem*>(nullptr)));
}

// ---- The nearest-start walk ----

using Rig = ListWalkRig::Rig<qnIndexableList, qnLinkItem, ListWalkRig::LinkItems>;

TEST(IndexableListTest, TheEndsAndTheCursorAreAnsweredWithoutMovingTheCursor) {
    Rig rig(10, 4);
    EXPECT_EQ("head+0", rig.find(0));
    EXPECT_EQ("unmoved", rig.cursorState());
    EXPECT_EQ("tail-0", rig.find(9));
    EXPECT_EQ("unmoved", rig.cursorState());
    EXPECT_EQ("cursor+0", rig.find(4));
    EXPECT_EQ("unmoved", rig.cursorState());
}

TEST(IndexableListTest, WalksBelowTheCursorStartAtTheHeadOnlyIfThatIsShorter) {
    EXPECT_EQ("head+2", Rig(10, 5).find(2));
    EXPECT_EQ("cursor-2", Rig(10, 5).find(3));
    EXPECT_EQ("cursor-2", Rig(10, 4).find(2));
}

TEST(IndexableListTest, WalksAboveTheCursorStartAtTheCursorOnlyIfThatIsShorter) {
    EXPECT_EQ("cursor+2", Rig(10, 3).find(5));
    EXPECT_EQ("tail-2", Rig(10, 3).find(7));
    EXPECT_EQ("tail-3", Rig(10, 3).find(6));
}

TEST(IndexableListTest, EveryWalkInListsOfUpToNineItemsTakesTheStatedRoute) { ListWalkRig::checkAllRoutes<Rig>(9); }

TEST(IndexableListTest, FindLinkPutsAMissingCursorOnTheHeadFirst) {
    Letters letters("abcdef");
    letters.list.cursor = nullptr;
    letters.list.cursorIndex = 3;
    EXPECT_EQ('f', nameOf(letters.list.findLink(5)));
    expectCursor(letters.list, 0, 'a');
    letters.list.cursor = nullptr;
    EXPECT_EQ('c', nameOf(letters.list.findLink(2)));
    expectCursor(letters.list, 2, 'c');
}

// ---- insertAt and its short forms ----

TEST(IndexableListTest, TheFirstItemBecomesHeadTailAndCursor) {
    Letters letters("");
    letters.list.insertAt(0, letters.add('a'));
    expectList(letters.list, "a");
    expectCursor(letters.list, 0, 'a');
    EXPECT_EQ(letters.list.head, letters.list.tail);
}

TEST(IndexableListTest, TheFirstItemGoesInAtAnyIndex) {
    Letters letters("");
    letters.list.insertAt(5, letters.add('a'));
    expectList(letters.list, "a");
    expectCursor(letters.list, 0, 'a');
}

TEST(IndexableListTest, TheFirstItemKeepsTheLinksThatItHas) {
    Letter before('x'), item('a'), behind('y');
    item.prev = &before;
    item.next = &behind;
    qnIndexableList list;
    list.append(&item);
    EXPECT_EQ(1, list.count);
    EXPECT_EQ(&item, list.head);
    EXPECT_EQ(&item, list.tail);
    EXPECT_EQ(&item, list.cursor);
    EXPECT_EQ(&before, item.prev);
    EXPECT_EQ(&behind, item.next);
}

TEST(IndexableListTest, TheStaleLinksOfAFirstItemAreNotFollowed) {
    Letter item('a'), first('f'), last('l');
    {
        auto gone = std::make_unique<Letter>('g');
        item.prev = gone.get();
        item.next = gone.get();
    }
    qnIndexableList list;
    list.append(&item);
    list.append(&last);
    list.insert(&first);
    expectList(list, "fal");

    qnIndexableList single;
    Letter other('o');
    {
        auto gone = std::make_unique<Letter>('g');
        other.prev = gone.get();
        other.next = gone.get();
    }
    single.append(&other);
    single.unlink(&other);
    expectAllZero(single);
    EXPECT_EQ(nullptr, other.next);
    EXPECT_EQ(nullptr, other.prev);
}

TEST(IndexableListTest, AppendGoesBehindTheTailAndLeavesTheCursor) {
    Letters letters("a");
    letters.list.append(letters.add('b'));
    letters.list.append(letters.add('c'));
    expectList(letters.list, "abc");
    expectCursor(letters.list, 0, 'a');
}

TEST(IndexableListTest, InsertGoesBeforeTheHeadAndMovesTheCursorsIndexAlong) {
    Letters letters("bc");
    letters.list.insert(letters.add('a'));
    expectList(letters.list, "abc");
    expectCursor(letters.list, 1, 'b');
}

TEST(IndexableListTest, InsertAtGoesBeforeTheLinkAtTheIndexWhichTheCursorThenFollows) {
    Letters letters("abcdef");
    letters.list.insertAt(3, letters.add('x'));
    expectList(letters.list, "abcxdef");
    // The walk to 3 put the cursor on d, and d now stands at 4.
    expectCursor(letters.list, 4, 'd');
}

TEST(IndexableListTest, InsertAtBehindTheCursorLeavesTheCursorsIndex) {
    Letters letters("abcdef");
    letters.moveCursor(2);
    letters.list.insertAt(5, letters.add('x'));
    expectList(letters.list, "abcdexf");
    expectCursor(letters.list, 2, 'c');
}

TEST(IndexableListTest, InsertAtBeforeTheCursorMovesTheCursorsIndex) {
    Letters letters("abcdef");
    letters.moveCursor(4);
    letters.list.insertAt(0, letters.add('x'));
    expectList(letters.list, "xabcdef");
    expectCursor(letters.list, 5, 'e');
}

TEST(IndexableListTest, InsertAtAtTheCursorMovesTheCursorsIndex) {
    Letters letters("abcdef");
    letters.moveCursor(4);
    letters.list.insertAt(4, letters.add('x'));
    expectList(letters.list, "abcdxef");
    expectCursor(letters.list, 5, 'e');
}

TEST(IndexableListTest, InsertAtAtCountOrPastItAppends) {
    Letters letters("ab");
    letters.list.insertAt(2, letters.add('c'));
    letters.list.insertAt(50, letters.add('d'));
    expectList(letters.list, "abcd");
    expectCursor(letters.list, 0, 'a');
}

TEST(IndexableListTest, AppendAtGoesBehindTheLinkAtTheIndex) {
    Letters letters("abc");
    letters.list.appendAt(0, letters.add('x'));
    expectList(letters.list, "axbc");
    letters.list.appendAt(3, letters.add('y'));
    expectList(letters.list, "axbcy");
    letters.list.appendAt(-1, letters.add('z'));
    expectList(letters.list, "zaxbcy");
}

TEST(IndexableListTest, AppendAtTheHighestIndexDoesNotOverflow) {
    Letters letters("a");
    letters.list.appendAt(std::numeric_limits<long>::max(), letters.add('b'));
    expectList(letters.list, "ab");
}

// ---- unlink ----

TEST(IndexableListTest, UnlinkBridgesClearsTheItemsLinksAndResetsTheCursor) {
    Letters letters("abcd");
    letters.moveCursor(2);
    EXPECT_EQ(letters.at('b'), letters.list.unlink(letters.at('b')));
    expectList(letters.list, "acd");
    expectCursor(letters.list, 0, 'a');
    EXPECT_EQ(nullptr, letters.at('b')->next);
    EXPECT_EQ(nullptr, letters.at('b')->prev);
    letters.list.unlink(letters.at('a'));
    expectList(letters.list, "cd");
    expectCursor(letters.list, 0, 'c');
    letters.list.unlink(letters.at('d'));
    expectList(letters.list, "c");
    letters.list.unlink(letters.at('c'));
    expectAllZero(letters.list);
}

TEST(IndexableListTest, UnlinkAtBelowTheCursorLowersItsIndex) {
    Letters letters("abcdef");
    letters.moveCursor(3);
    EXPECT_EQ(letters.at('a'), letters.list.unlinkAt(0));
    expectList(letters.list, "bcdef");
    expectCursor(letters.list, 2, 'd');
    EXPECT_EQ(nullptr, letters.at('a')->next);
}

TEST(IndexableListTest, UnlinkAtAboveTheCursorLeavesIt) {
    Letters letters("abcdef");
    letters.moveCursor(3);
    EXPECT_EQ(letters.at('f'), letters.list.unlinkAt(5));
    expectList(letters.list, "abcde");
    expectCursor(letters.list, 3, 'd');
}

TEST(IndexableListTest, UnlinkAtTheCursorMovesItToTheFollowingLink) {
    Letters letters("abcdef");
    letters.moveCursor(3);
    letters.list.unlinkAt(3);
    expectList(letters.list, "abcef");
    expectCursor(letters.list, 3, 'e');
}

TEST(IndexableListTest, UnlinkAtWalksFirstSoThatTheCursorStandsBehindTheGap) {
    Letters letters("abcdefgh");
    letters.list.unlinkAt(2);
    expectList(letters.list, "abdefgh");
    expectCursor(letters.list, 2, 'd');
}

TEST(IndexableListTest, UnlinkAtTheCursorOnTheTailMovesItToThePrecedingLink) {
    Letters letters("abc");
    letters.moveCursor(2);
    letters.list.unlinkAt(2);
    expectList(letters.list, "ab");
    expectCursor(letters.list, 1, 'b');
}

TEST(IndexableListTest, UnlinkAtOfTheOnlyItemClearsTheCursor) {
    Letters letters("a");
    EXPECT_EQ(letters.at('a'), letters.list.unlinkAt(0));
    expectAllZero(letters.list);
}

// ---- split ----

TEST(IndexableListTest, SplitOfTheHeadEmptiesTheListAndTheChainStaysWhole) {
    Letters letters("abcd");
    letters.moveCursor(2);
    EXPECT_EQ(letters.at('a'), letters.list.split(letters.at('a')));
    expectAllZero(letters.list);
    qnIndexableList again(letters.at('a'));
    expectList(again, "abcd");
}

TEST(IndexableListTest, SplitCutsBeforeTheLinkAndResetsTheCursor) {
    Letters letters("abcde");
    letters.moveCursor(1);
    EXPECT_EQ(letters.at('d'), letters.list.split(letters.at('d')));
    expectList(letters.list, "abc");
    expectCursor(letters.list, 0, 'a');
    EXPECT_EQ("de", chainText(letters.at('d')));
    EXPECT_EQ(nullptr, letters.at('d')->prev);
    EXPECT_EQ(letters.at('d'), letters.at('e')->prev);
}

TEST(IndexableListTest, SplitCountsTheRestAnew) {
    Letters letters("abcde");
    letters.list.count = 77;
    letters.list.split(letters.at('c'));
    EXPECT_EQ(2, letters.list.count);
}

TEST(IndexableListTest, SplitAtBehindTheCursorLeavesIt) {
    Letters letters("abcdef");
    letters.moveCursor(1);
    // The last index is answered without a walk, so the cursor is still on b.
    EXPECT_EQ(letters.at('f'), letters.list.splitAt(5));
    expectList(letters.list, "abcde");
    expectCursor(letters.list, 1, 'b');
}

TEST(IndexableListTest, SplitAtTheCursorOrBeforeItResetsIt) {
    Letters letters("abcdef");
    letters.moveCursor(4);
    EXPECT_EQ(letters.at('c'), letters.list.splitAt(2));
    expectList(letters.list, "ab");
    expectCursor(letters.list, 0, 'a');
    EXPECT_EQ("cdef", chainText(letters.at('c')));

    Letters atCursor("abcdef");
    atCursor.moveCursor(3);
    atCursor.list.splitAt(3);
    expectList(atCursor.list, "abc");
    expectCursor(atCursor.list, 0, 'a');
}

TEST(IndexableListTest, SplitAtZeroEmptiesTheList) {
    Letters letters("abc");
    EXPECT_EQ(letters.at('a'), letters.list.splitAt(0));
    expectAllZero(letters.list);
    EXPECT_EQ("abc", chainText(letters.at('a')));
}

// ---- splices ----

TEST(IndexableListTest, InsertListGoesBeforeTheHead) {
    Letters letters("cd"), other("ab");
    letters.moveCursor(1);
    letters.list.insertList(&other.list);
    expectList(letters.list, "abcd");
    expectCursor(letters.list, 0, '-');
    expectAllZero(other.list);
}

TEST(IndexableListTest, InsertListAtGoesBeforeTheLinkAtTheIndex) {
    Letters letters("abcd"), other("xyz");
    letters.list.insertListAt(2, &other.list);
    expectList(letters.list, "abxyzcd");
    expectCursor(letters.list, 0, '-');
    expectAllZero(other.list);
}

TEST(IndexableListTest, InsertListAtTheCountOrPastItAddsAtTheEnd) {
    Letters letters("ab"), other("cd"), third("e");
    letters.list.insertListAt(2, &other.list);
    expectList(letters.list, "abcd");
    EXPECT_EQ(other.at('d'), letters.list.tail);
    letters.list.insertListAt(99, &third.list);
    expectList(letters.list, "abcde");
    expectCursor(letters.list, 0, '-');
}

TEST(IndexableListTest, ListsGoIntoAnEmptyListAsAWhole) {
    Letters inserted("abc"), appended("xyz");
    qnIndexableList list, second;
    list.insertListAt(0, &inserted.list);
    expectList(list, "abc");
    expectCursor(list, 0, '-');
    expectAllZero(inserted.list);
    second.appendListAt(4, &appended.list);
    expectList(second, "xyz");
    expectCursor(second, 0, '-');
    expectAllZero(appended.list);
}

TEST(IndexableListTest, AnEmptyListInsertedIntoAnEmptyListLeavesBothEmpty) {
    qnIndexableList list, other;
    list.insertList(&other);
    expectAllZero(list);
    expectAllZero(other);
    list.appendList(&other);
    expectAllZero(list);
    expectAllZero(other);
}

TEST(IndexableListTest, SplicingAnEmptyListChangesNothing) {
    Letters letters("abcde");
    letters.moveCursor(1);
    qnIndexableList empty;
    letters.list.insertListAt(3, &empty);
    expectList(letters.list, "abcde");
    expectCursor(letters.list, 1, 'b');
    letters.list.appendListAt(3, &empty);
    letters.list.appendList(&empty);
    letters.list.insertList(&empty);
    expectList(letters.list, "abcde");
    expectCursor(letters.list, 1, 'b');
}

TEST(IndexableListTest, AppendListGoesBehindTheTailAndMovesIt) {
    Letters letters("ab"), other("cd");
    letters.list.appendList(&other.list);
    expectList(letters.list, "abcd");
    EXPECT_EQ(other.at('d'), letters.list.tail);
    expectCursor(letters.list, 0, '-');
    expectAllZero(other.list);
}

TEST(IndexableListTest, AppendListAtGoesBehindTheLinkAtTheIndex) {
    Letters letters("abcd"), other("xyz");
    letters.list.appendListAt(1, &other.list);
    expectList(letters.list, "abxyzcd");
    expectCursor(letters.list, 0, '-');
    expectAllZero(other.list);
}

TEST(IndexableListTest, AppendListAtTheCountOrPastItMovesTheTail) {
    Letters letters("ab"), other("cd"), third("e");
    letters.list.appendListAt(2, &other.list);
    letters.list.appendListAt(99, &third.list);
    expectList(letters.list, "abcde");
    EXPECT_EQ(third.at('e'), letters.list.tail);
}

TEST(IndexableListTest, AppendListAtBehindTheLastItemLeavesTheTailWhereItWas) {
    Letters letters("abc"), other("xy");
    letters.list.appendListAt(2, &other.list);
    EXPECT_EQ("abcxy", chainText(letters.list.head));
    EXPECT_EQ(letters.at('c'), letters.list.tail);
    EXPECT_EQ(letters.at('c'), other.at('x')->prev);
    EXPECT_EQ(5, letters.list.count);
    expectCursor(letters.list, 0, '-');
    expectAllZero(other.list);
    // The last index is the tail, whatever stands behind it.
    EXPECT_EQ('c', nameOf(letters.list.findLink(4)));
}

// ---- A tail that is not the end of the chain ----

TEST(IndexableListTest, AppendBehindATailLeftBehindGoesRightBehindIt) {
    Letters letters("abc"), other("xy");
    letters.list.appendListAt(2, &other.list);
    letters.list.append(letters.add('d'));
    // What was spliced in behind the old tail stays in the chain.
    EXPECT_EQ("abcdxy", chainText(letters.list.head));
    EXPECT_EQ(letters.at('d'), other.at('x')->prev);
    EXPECT_EQ(letters.at('d'), letters.list.tail);
    EXPECT_EQ(6, letters.list.count);
}

TEST(IndexableListTest, AppendListBehindATailLeftBehindGoesRightBehindIt) {
    Letters letters("abc"), other("xy"), third("de");
    letters.list.appendListAt(2, &other.list);
    letters.list.appendList(&third.list);
    EXPECT_EQ("abcdexy", chainText(letters.list.head));
    EXPECT_EQ(third.at('e'), other.at('x')->prev);
    EXPECT_EQ(third.at('e'), letters.list.tail);
    EXPECT_EQ(7, letters.list.count);
}

TEST(IndexableListTest, AWalkBackFromATailLeftBehindEndsAtTheHead) {
    Letters letters("a"), other("bcdefghijk");
    letters.list.appendListAt(0, &other.list);
    EXPECT_EQ(11, letters.list.count);
    // Four steps back from the tail, which is the head here.
    EXPECT_EQ(nullptr, letters.list.findLink(6));
    EXPECT_EQ(nullptr, letters.list.cursor);
    EXPECT_EQ('e', nameOf(letters.list.findLink(4)));
}

TEST(IndexableListTest, OperationsOnALinkThatAWalkDoesNotReachChangeNothingOrAddAtTheEnd) {
    Letters letters("a"), other("bcdefghijk"), third("z");
    letters.list.appendListAt(0, &other.list);
    EXPECT_EQ(nullptr, letters.list.unlinkAt(6));
    EXPECT_EQ(nullptr, letters.list.splitAt(6));
    EXPECT_EQ(11, letters.list.count);
    letters.list.insertAt(6, letters.add('m'));
    EXPECT_EQ(letters.at('m'), letters.list.tail);
    EXPECT_EQ(12, letters.list.count);
    letters.list.insertListAt(8, &third.list);
    EXPECT_EQ(13, letters.list.count);
}

TEST(IndexableListTest, UnlinkOfATailLeftBehindThatIsAlsoTheHeadFindsTheEndOfTheChain) {
    Letters letters("a"), other("bcd");
    letters.list.appendListAt(0, &other.list);
    letters.list.unlink(letters.at('a'));
    expectList(letters.list, "bcd");
    expectCursor(letters.list, 0, 'b');
}

TEST(IndexableListTest, ASplitInFrontOfTheCursorNeverLeavesItOnTheDetachedChain) {
    Letters letters("abc"), other("defgh");
    letters.list.appendListAt(2, &other.list);
    letters.moveCursor(5);
    // The last index is the tail c, two steps in front of the cursor, although 7 is above the cursor's 5.
    EXPECT_EQ(letters.at('c'), letters.list.splitAt(7));
    expectList(letters.list, "ab");
    expectCursor(letters.list, 0, 'a');
}

TEST(IndexableListTest, UnlinkAtNeverLeavesTheCursorOnTheItemThatHasGone) {
    Letters letters("abc"), other("de");
    letters.list.appendListAt(2, &other.list);
    letters.moveCursor(2);
    // The last index is the tail c, on which the cursor stands with index 2.
    EXPECT_EQ(letters.at('c'), letters.list.unlinkAt(4));
    EXPECT_EQ("abde", chainText(letters.list.head));
    expectCursor(letters.list, 0, 'a');
}

TEST(IndexableListTest, AChainWithATailLeftBehindIsSplicedWhole) {
    Letters letters("ab"), other("xyz"), third("uv");
    other.list.appendListAt(2, &third.list);
    letters.list.insertListAt(1, &other.list);
    expectList(letters.list, "axyzuvb");
}

TEST(IndexableListTest, ACopyIsASecondViewOfTheSameItems) {
    Letters letters("abc");
    qnIndexableList view(letters.list);
    expectList(view, "abc");
    EXPECT_EQ(letters.list.head, view.head);
}

TEST(IndexableListDeathTest, AChainThatRunsInACircleEndsTheProcess) {
    Letter a('a'), b('b'), c('c');
    a.next = &b;
    b.next = &c;
    c.next = &b;
    EXPECT_EXIT(qnIndexableList list(&a), testing::KilledBySignal(SIGABRT),
                "^qnIndexableList::qnIndexableList: the chain runs in a circle\n$");
}

TEST(IndexableListDeathTest, MoreItemsThanACountCanHoldEndTheProcess) {
    Letters letters("ab"), other("c");
    letters.list.count = std::numeric_limits<int>::max();
    EXPECT_EXIT(letters.list.append(letters.add('d')), testing::KilledBySignal(SIGABRT),
                "^qnIndexableList::insertAt: more than 2147483647 items\n$");
    EXPECT_EXIT(letters.list.appendList(&other.list), testing::KilledBySignal(SIGABRT),
                "^qnIndexableList::appendListAt: more than 2147483647 items\n$");
}

#ifndef MORVAQNDS_CHECKED

TEST(IndexableListDeathTest, ASplitThatLeavesACircleEndsTheProcess) {
    Letters letters("abcdefg");
    letters.at('c')->next = letters.at('b');
    EXPECT_EXIT(letters.list.split(letters.at('g')), testing::KilledBySignal(SIGABRT),
                "^qnIndexableList::split: the chain runs in a circle\n$");
}

TEST(IndexableListTest, NothingIsCheckedButNothingBreaksAtIndicesOutOfRange) {
    const long lowest = std::numeric_limits<long>::min();
    const long highest = std::numeric_limits<long>::max();
    Letters letters("abc"), other("x"), third("y");
    for (const long index : {lowest, -1L}) EXPECT_EQ('a', nameOf(letters.list.findLink(index)));
    for (const long index : {3L, highest}) EXPECT_EQ('c', nameOf(letters.list.findLink(index)));
    expectCursor(letters.list, 0, 'a');
    letters.list.insertAt(-5, letters.add('d'));
    expectList(letters.list, "dabc");
    expectCursor(letters.list, 1, 'a');
    letters.list.insertListAt(lowest, &other.list);
    expectList(letters.list, "xdabc");
    letters.list.appendListAt(lowest, &third.list);
    expectList(letters.list, "xydabc");
    EXPECT_EQ('x', nameOf(letters.list.unlinkAt(-7)));
    EXPECT_EQ('c', nameOf(letters.list.unlinkAt(highest)));
    expectList(letters.list, "ydab");
    expectCursor(letters.list, 0, 'y');
    letters.list.appendAt(lowest, letters.add('e'));
    expectList(letters.list, "eydab");
    EXPECT_EQ('b', nameOf(letters.list.splitAt(highest)));
    EXPECT_EQ('e', nameOf(letters.list.splitAt(lowest)));
    expectAllZero(letters.list);
}

TEST(IndexableListTest, NothingIsCheckedButNothingBreaksInAnEmptyList) {
    qnIndexableList list;
    for (const long index : {-3L, 0L, 1L, 7L}) {
        EXPECT_EQ(nullptr, list.findLink(index));
        EXPECT_EQ(nullptr, list.unlinkAt(index));
        EXPECT_EQ(nullptr, list.splitAt(index));
        expectAllZero(list);
    }
}

TEST(IndexableListTest, UnlinkingTwiceLowersTheCountTwiceAndTheListGoesOn) {
    Letters letters("a");
    letters.list.unlink(letters.at('a'));
    letters.list.unlink(letters.at('a'));
    EXPECT_EQ(-1, letters.list.count);
    letters.list.append(letters.at('a'));
    letters.list.append(letters.add('b'));
    EXPECT_EQ("ab", chainText(letters.list.head));
    EXPECT_EQ(letters.at('b'), letters.list.tail);
}

TEST(IndexableListTest, SplitOfAnItemThatIsInNoListCutsNothing) {
    Letters letters("abc");
    Letter stray('s');
    EXPECT_EQ(&stray, letters.list.split(&stray));
    expectList(letters.list, "abc");
}

TEST(IndexableListTest, SplicingAListIntoItselfChangesNothing) {
    Letters letters("abcd");
    letters.moveCursor(2);
    letters.list.insertListAt(1, &letters.list);
    letters.list.appendListAt(1, &letters.list);
    letters.list.appendList(&letters.list);
    expectList(letters.list, "abcd");
    expectCursor(letters.list, 2, 'c');
}

#else

#define EXPECT_CHECK(statement, message) EXPECT_EXIT(statement, testing::KilledBySignal(SIGABRT), "^" message "\n$")

TEST(IndexableListDeathTest, CheckedIndicesOutOfRange) {
    Letters letters("abc"), other("x");
    EXPECT_CHECK(letters.list.findLink(3), "qnIndexableList::findLink: index 3 outside a list of 3");
    EXPECT_CHECK(letters.list.findLink(-1), "qnIndexableList::findLink: index -1 outside a list of 3");
    EXPECT_CHECK(qnIndexableList().findLink(0), "qnIndexableList::findLink: index 0 outside a list of 0");
    EXPECT_CHECK(letters.list.unlinkAt(3), "qnIndexableList::unlinkAt: index 3 outside a list of 3");
    EXPECT_CHECK(letters.list.splitAt(-2), "qnIndexableList::splitAt: index -2 outside a list of 3");
    EXPECT_CHECK(letters.list.insertAt(-1, letters.add('d')), "qnIndexableList::insertAt: index -1 is negative");
    EXPECT_CHECK(letters.list.insertListAt(-1, &other.list), "qnIndexableList::insertListAt: index -1 is negative");
    EXPECT_CHECK(letters.list.appendListAt(-1, &other.list), "qnIndexableList::appendListAt: index -1 is negative");
}

TEST(IndexableListDeathTest, CheckedItemsOfNoOrTheSameList) {
    Letters letters("abc");
    Letter stray('s');
    EXPECT_CHECK(letters.list.unlink(&stray), "qnIndexableList::unlink: item 0x[0-9a-f]+ is not in the list");
    EXPECT_CHECK(letters.list.split(&stray), "qnIndexableList::split: item 0x[0-9a-f]+ is not in the list");
    EXPECT_CHECK(letters.list.insertAt(1, nullptr), "qnIndexableList::insertAt: no item for index 1");
    EXPECT_CHECK(letters.list.append(letters.at('c')),
                 "qnIndexableList::insertAt: item 0x[0-9a-f]+ is in the list already");
    EXPECT_CHECK(letters.list.insertListAt(1, &letters.list),
                 "qnIndexableList::insertListAt: not another list, index 1");
    EXPECT_CHECK(letters.list.appendListAt(2, nullptr), "qnIndexableList::appendListAt: not another list, index 2");
}

#undef EXPECT_CHECK

#endif

TEST(IndexableListTest, RandomChangesAgreeWithAVector) {
    std::deque<Letter> pool;
    qnIndexableList list;
    std::vector<qnLinkItem*> model;
    unsigned state = 4711;
    const auto draw = [&state](std::size_t below) {
        state = state * 1664525U + 1013904223U;
        return static_cast<long>((state >> 8) % below);
    };
    const auto drawList = [&](qnIndexableList& other) {
        std::vector<qnLinkItem*> items;
        for (long n = draw(4); n > 0; --n) {
            pool.emplace_back('p');
            items.push_back(&pool.back());
            other.append(&pool.back());
        }
        return items;
    };
    for (int step = 0; step < 20000; ++step) {
        const long size = static_cast<long>(model.size());
        const long place = draw(model.size() + 1);
        switch (draw(7)) {
            case 0:
                pool.emplace_back('p');
                list.insertAt(place, &pool.back());
                model.insert(model.begin() + place, &pool.back());
                break;
            case 1: {
                qnIndexableList other;
                const std::vector<qnLinkItem*> items = drawList(other);
                list.insertListAt(place, &other);
                model.insert(model.begin() + place, items.begin(), items.end());
                break;
            }
            case 2: {
                // Behind the last item the tail would stay behind; tested by itself.
                if (place == size - 1) break;
                qnIndexableList other;
                const std::vector<qnLinkItem*> items = drawList(other);
                list.appendListAt(place, &other);
                model.insert(model.begin() + (place < size ? place + 1 : size), items.begin(), items.end());
                break;
            }
            case 3:
                if (place == size) break;
                ASSERT_EQ(model[static_cast<std::size_t>(place)], list.unlinkAt(place));
                model.erase(model.begin() + place);
                break;
            case 4:
                if (place == size || draw(20) != 0) break;
                ASSERT_EQ(model[static_cast<std::size_t>(place)], list.splitAt(place));
                model.resize(static_cast<std::size_t>(place));
                break;
            default:
                if (place == size) break;
                ASSERT_EQ(model[static_cast<std::size_t>(place)], list.findLink(place)) << "step " << step;
        }
        ASSERT_EQ(static_cast<int>(model.size()), list.count);
        ASSERT_EQ(model.empty() ? nullptr : model.front(), list.head);
        ASSERT_EQ(model.empty() ? nullptr : model.back(), list.tail);
        if (list.cursor == nullptr) continue;
        ASSERT_EQ(model[static_cast<std::size_t>(list.cursorIndex)], list.cursor) << "step " << step;
    }
}

}  // namespace IndexableListTest
