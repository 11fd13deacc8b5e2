#ifndef MORVAQNDS_TESTS_LISTWALKRIG_H
#define MORVAQNDS_TESTS_LISTWALKRIG_H

#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

/**
 * Makes the route of a list's walk visible, without help from the list.
 *
 * The rig gives a list a head, a tail and a cursor that belong to three separate chains: from the head one can only go
 * forward, from the tail only backward, from the cursor both ways. Every link is a node of its own, so the node that a
 * walk ends on tells where it started, which way it went and how many steps it took: "cursor-2" is two steps backward
 * from the cursor. All other links are null, so a walk that strays finds nothing.
 */
namespace ListWalkRig {

struct GenericNodes {
    template <class Node>
    static void add(std::deque<Node>& nodes) {
        nodes.emplace_back(nullptr);
    }
    template <class List>
    static auto find(List& list, long index) -> decltype(list.head) {
        return list.findNode(index);
    }
};

struct LinkItems {
    template <class Node>
    static void add(std::deque<Node>& nodes) {
        nodes.emplace_back();
    }
    template <class List>
    static auto find(List& list, long index) -> decltype(list.head) {
        return list.findLink(index);
    }
};

template <class List, class Node, class Kind>
class Rig {
public:
    Rig(int count, int cursorIndex) { reset(count, cursorIndex); }

    ~Rig() { dismantle(); }

    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    /** A list of `count` items with the cursor at `cursorIndex`. */
    void reset(int count, int cursorIndex) {
        dismantle();
        Node* head = addNode("head+0");
        Node* tail = addNode("tail-0");
        Node* cursor = addNode("cursor+0");
        addChain(head, "head+", count, &Node::next);
        addChain(tail, "tail-", count, &Node::prev);
        addChain(cursor, "cursor+", count, &Node::next);
        addChain(cursor, "cursor-", count, &Node::prev);
        list.head = head;
        list.tail = tail;
        list.cursor = cursor;
        list.cursorIndex = cursorIndex;
        list.count = count;
        startCursor = cursor;
        startIndex = cursorIndex;
    }

    /** The route to `index`. */
    std::string find(long index) {
        found = Kind::find(list, index);
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if (&nodes[i] == found) return names[i];
        }
        return "nowhere";
    }

    /** "unmoved", or "at" the index for which the cursor now stands, provided that it is the node just found. */
    std::string cursorState() const {
        if (list.cursor == startCursor && list.cursorIndex == startIndex) return "unmoved";
        return list.cursor == found ? "at " + std::to_string(list.cursorIndex) : "elsewhere";
    }

private:
    Node* addNode(const std::string& name) {
        Kind::add(nodes);
        names.push_back(name);
        return &nodes.back();
    }

    void addChain(Node* from, const std::string& route, int steps, Node* Node::*way) {
        for (int step = 1; step <= steps; ++step) {
            Node* node = addNode(route + std::to_string(step));
            from->*way = node;
            from = node;
        }
    }

    void dismantle() {
        list.head = list.tail = list.cursor = nullptr;
        list.count = list.cursorIndex = 0;
        for (Node& node : nodes) node.next = node.prev = nullptr;
        nodes.clear();
        names.clear();
    }

    List list;
    std::deque<Node> nodes;
    std::vector<std::string> names;
    Node* startCursor = nullptr;
    Node* found = nullptr;
    int startIndex = 0;
};

/** The route by the rule: the ends, then the cursor, then the nearer start, backward at a tie. */
inline std::string expectedRoute(int count, int cursorIndex, int index) {
    if (index == 0) return "head+0";
    if (index == count - 1) return "tail-0";
    if (index == cursorIndex) return "cursor+0";
    if (index < cursorIndex) {
        const int back = cursorIndex - index;
        return index < back ? "head+" + std::to_string(index) : "cursor-" + std::to_string(back);
    }
    const int ahead = index - cursorIndex;
    const int rest = count - index - 1;
    return ahead < rest ? "cursor+" + std::to_string(ahead) : "tail-" + std::to_string(rest);
}

/** Tries every index with every position of the cursor in lists of 1 to `largest` items. */
template <class SomeRig>
void checkAllRoutes(int largest) {
    for (int count = 1; count <= largest; ++count) {
        for (int cursorIndex = 0; cursorIndex < count; ++cursorIndex) {
            for (int index = 0; index < count; ++index) {
                SomeRig rig(count, cursorIndex);
                const std::string route = expectedRoute(count, cursorIndex, index);
                EXPECT_EQ(route, rig.find(index)) << count << " items, cursor " << cursorIndex << ", index " << index;
                const bool isShortcut = index == 0 || index == count - 1 || index == cursorIndex;
                EXPECT_EQ(isShortcut ? "unmoved" : "at " + std::to_string(index), rig.cursorState())
                    << count << " items, cursor " << cursorIndex << ", index " << index;
            }
        }
    }
}

}  // namespace ListWalkRig

#endif
