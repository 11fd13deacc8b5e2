// The requests to the heap that strings, temporaries and stack buffers make, to the byte.
#include <morvaqnds.h>

#include <cstring>
#include <sstream>

#include "support/HeapWatch.h"

using heapWatch::expect;

namespace {

char text[6000];

void emptyStrings() {
    const char* none = nullptr;
    expect(__LINE__, "", [] { qnStr s; });
    expect(__LINE__, "", [] { qnStr s(""); });
    expect(__LINE__, "", [&] { qnStr s(none); });
    expect(__LINE__, "", [] { qnStr s("abc", 0u); });
    expect(__LINE__, "", [] {
        qnStr s(0u), t(s);
        t = s;
        t = "";
        t.resize(0);
        t.append("");
        t.insert("", 0);
        t.setMaxLength(100);
        t.lower();
        t.raise();
    });
    qnStr s("abc");
    expect(__LINE__, "", [&] { s.tail(0); });
    expect(__LINE__, "f ", [&] { s.remove(0, 3); });
}

void construction() {
    expect(__LINE__, "m4 f ", [] { qnStr s("abc"); });
    expect(__LINE__, "m3 f ", [] { qnStr s("abc", 2u); });
    expect(__LINE__, "m8 f ", [] { qnStr s(7u); });
    qnStr s("abcdef");
    expect(__LINE__, "m7 f ", [&] { qnStr t(s); });
    expect(__LINE__, "m4 f ", [&] { s.extract(1, 3); });
    expect(__LINE__, "m3 f ", [&] { s.head(2); });
    expect(__LINE__, "m7 f ", [&] { s.copy(); });
    expect(__LINE__, "m3 f ", [&] { s.cut(1, 2); });
    expect(__LINE__, "m4 f ", [] { qnStr t(123); });
    expect(__LINE__, "m4 f ", [] { qnStr t(0.5); });
    expect(__LINE__, "m1 f ", [] { qnStr t(1, ""); });
}

void growth() {
    qnStr s;
    expect(__LINE__, "m4 ", [&] { s.append("abc"); });
    expect(__LINE__, "r6 ", [&] { s.append("de"); });
    expect(__LINE__, "r7 ", [&] { s.append('f'); });
    expect(__LINE__, "r8 ", [&] { s.append("ghij", 1); });
    expect(__LINE__, "r15 ", [&] { s.append(s.text()); });
    // 14 characters and 2, the terminator, and one byte more.
    expect(__LINE__, "r18 ", [&] { s.insert("XY", 3); });
    // That byte is not counted on.
    expect(__LINE__, "r18 ", [&] { s.append('z'); });
    expect(__LINE__, "r20 ", [&] { s.insert('!', 0); });
    expect(__LINE__, "", [&] {
        s.remove(2, 10);
        s.replace("ab", 0);
        s = "ab";
    });
    // The length decides, not what the block could hold.
    expect(__LINE__, "r4 ", [&] { s.append('c'); });
    expect(__LINE__, "f ", [&] { s = ""; });
    expect(__LINE__, "m5 ", [&] { s.insert("abc", 0); });
    expect(__LINE__, "f ", [&] { s.resize(0); });
    expect(__LINE__, "m3 ", [&] { s.insert('a', 0); });
    expect(__LINE__, "", [&] { s = "b"; });
    expect(__LINE__, "r3 ", [&] { s = "bc"; });
    expect(__LINE__, "r7 ", [&] { s = "abcdef"; });
    expect(__LINE__, "", [&] { s = s.text() + 2; });
}

void bufferPolicy() {
    qnStr s;
    expect(__LINE__, "", [&] { s.resizeInternal(0); });
    expect(__LINE__, "m11 ", [&] { s.resizeInternal(10); });
    // Still empty: nothing is copied, and the block of its own goes first.
    expect(__LINE__, "f m21 ", [&] { s.resizeInternal(20); });
    s.data[0] = 0;
    s = "abc";
    expect(__LINE__, "", [&] { s.resizeInternal(3); });
    expect(__LINE__, "r5 ", [&] { s.resizeInternal(4); });
    expect(__LINE__, "r5 ", [&] { s.resizeInternal(4); });
    expect(__LINE__, "r101 ", [&] { s.setMaxLength(100); });
    expect(__LINE__, "", [&] { s.setMaxLength(1); });
    expect(__LINE__, "r7 ", [&] { s.resize(6); });
    expect(__LINE__, "", [&] { s.resize(2); });
    expect(__LINE__, "r4 ", [&] { s.resize(3); });
    expect(__LINE__, "f ", [&] { s.resizeInternal(0); });
    s.slength = 1;
    expect(__LINE__, "m2 f ", [&] {
        s.resize(1);
        s.resize(0);
    });
}

void formatting() {
    const char* nothing = "";
    const char* long600 = text + sizeof text - 601;
    qnStr s;
    // 2 for the argument, 1 for the dash, 10 for the number; 14 characters and the terminator.
    expect(__LINE__, "m15 ", [&] { s.format("%s-%d", "ab", 7); });
    // Room for 3 is less than the 5 bytes of the text so far.
    expect(__LINE__, "", [&] { s.format("%c%%", 'a'); });
    expect(__LINE__, "r5 ", [&] { s.format("abc"); });
    expect(__LINE__, "r22 ", [&] { s.format("%Lf", 1.5L); });
    // Long results are formatted in a block aside. A width past the estimate of 10 gets what it needs.
    expect(__LINE__, "m601 r601 f ", [&] { s.format("%600d", 7); });
    expect(__LINE__, "m601 r602 f ", [&] { s.format("%s", long600); });
    expect(__LINE__, "", [&] { s.format("%s", "short"); });
    expect(__LINE__, "f ", [&] { s = ""; });
    expect(__LINE__, "m2 ", [&] { s.format("%s", nothing); });
    expect(__LINE__, "f m2 ", [&] { s.format("%s", nothing); });
    expect(__LINE__, "f m42 ", [&] { s.format("%10.3e%zu%lld", 1.0, sizeof(int), 3LL); });
}

void temporaries() {
    expect(__LINE__, "", [] { qnTempStr t(text, 50, text, 49); });
    expect(__LINE__, "m101 f ", [] { qnTempStr t(text, 50, text, 50); });
    qnTempStr t98(text, 98, text, 0), t99(text, 99, text, 0);
    expect(__LINE__, "", [&] { qnTempStr t(t98); });
    expect(__LINE__, "m100 f ", [&] { qnTempStr t(t99); });
    expect(__LINE__, "", [&] { t98.concat("y", 1); });
    expect(__LINE__, "m101 ", [&] { t98.concat("y", 1); });
    expect(__LINE__, "r103 ", [&] { t98.concat("yz", 2); });
    expect(__LINE__, "r103 ", [&] { t98.concat("", 0); });
    qnTempStr copy99(t99);
    expect(__LINE__, "", [&] { copy99.concat("", 0); });
    expect(__LINE__, "r101 ", [&] { copy99.concat("a", 1); });
    expect(__LINE__, "m104 ", [&] { t99.concat("abcd", 4); });
    qnStr a("a"), b(text, 60u), result;
    expect(__LINE__, "m6 ", [&] { result = a + "-" + a + "-" + a; });
    // 120 characters do not fit inside: one block that grows, and the result's own.
    expect(__LINE__, "m121 r122 r122 f ", [&] { result = b + b + "!"; });
    expect(__LINE__, "m121 r181 r241 r241 f ", [&] { result = b + b + b + b; });
}

void input() {
    std::istringstream lines("0123456789012345678901234\nabc\n");
    qnStr s;
    expect(__LINE__, "m11 r21 r31 ", [&] { lines >> s; });
    expect(__LINE__, "", [&] { lines >> s; });
}

void stackBuffers() {
    expect(__LINE__, "", [] {
        qnStackBuffer b;
        for (int i = 0; i < 1000; ++i) b.addc('x');
    });
    expect(__LINE__, "m1500 f ", [] {
        qnStackBuffer b;
        for (int i = 0; i < 1001; ++i) b.addc('x');
    });
    expect(__LINE__, "m1500 r2000 r2500 f ", [] {
        qnStackBuffer b;
        for (int i = 0; i < 2001; ++i) b.addc('x');
    });
    expect(__LINE__, "m1500 f ", [] { qnStackBuffer().put(text, 1200); });
    expect(__LINE__, "m5000 f ", [] { qnStackBuffer().put(text, 5000); });
    expect(__LINE__, "m1500 f ", [] { qnStackBuffer(0).put(text, 1001); });
    expect(__LINE__, "m1064 r1128 f ", [] {
        qnStackBuffer b(64);
        b.put(text, 1064);
        b.addc('x');
    });
    expect(__LINE__, "m1500 r2700 f ", [] {
        qnStackBuffer b;
        b.put(text, 1500);
        b.put(text, 1200);
    });
    qnStackBuffer small, large(64);
    large.put(text, 1001);
    expect(__LINE__, "", [&] { qnStackBuffer b(small); });
    expect(__LINE__, "m1064 r1564 f ", [&] {
        qnStackBuffer b(large);
        b.put(text, 63);
        b.addc('x');
    });
}

}  // namespace

int main() {
    std::memset(text, 'x', sizeof text - 1);
    emptyStrings();
    construction();
    growth();
    bufferPolicy();
    formatting();
    temporaries();
    input();
    stackBuffers();
    return heapWatch::failures;
}
