// Feeds arbitrary bytes to a reader. Whatever they are, reading ends in a graph, a null result, or a fatal message.
//
// qnFatal is this program's own here: instead of ending the process it leaves the read. Objects that were being read
// are lost, so leaks are not looked for.
#include <morvaqnds.h>

#include <csetjmp>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

std::jmp_buf leave;

/** Bytes that end. */
class Input : public qnStream {
public:
    Input(const std::uint8_t* bytes, std::size_t size) : next_(bytes), left_(size) {}
    bool hasError() override { return false; }
    bool atEOF() override { return left_ == 0; }
    bool isReading() override { return true; }
    bool isWriting() override { return false; }
    qnStreamType getType() override { return Read; }
    bool getBytes(char* buffer, unsigned count) override { return get(buffer, count); }
    bool getShorts(short* buffer, unsigned count) override { return get(buffer, 2 * std::size_t(count)); }
    bool getInts(int* buffer, unsigned count) override { return get(buffer, 4 * std::size_t(count)); }
    bool getLongs(long* buffer, unsigned count) override {
        for (unsigned i = 0; i < count; ++i) {
            std::int32_t value;
            if (!get(&value, sizeof value)) return false;
            buffer[i] = value;
        }
        return true;
    }
    bool getFloats(float* buffer, unsigned count) override { return get(buffer, 4 * std::size_t(count)); }
    bool getDoubles(double* buffer, unsigned count) override { return get(buffer, 8 * std::size_t(count)); }
    bool putBytes(const char*, unsigned) override { return false; }
    bool putShorts(const short*, unsigned) override { return false; }
    bool putInts(const int*, unsigned) override { return false; }
    bool putLongs(const long*, unsigned) override { return false; }
    bool putFloats(const float*, unsigned) override { return false; }
    bool putDoubles(const double*, unsigned) override { return false; }

private:
    bool get(void* buffer, std::size_t n) {
        if (left_ < n) return false;
        std::memcpy(buffer, next_, n);
        next_ += n;
        left_ -= n;
        return true;
    }
    const std::uint8_t* next_;
    std::size_t left_;
};

/** A base part that a class may have on two paths. */
struct Part {
    bool xdr(qnTranscriber& t) { return t.xdr(&length, 1) && t.xdr(&numbers, length) && label.xdr(t); }
    unsigned length = 0;
    short* numbers = nullptr;
    qnStr label;
};

/** An object with a field of every sort. */
class Node : public qnXDRObj {
public:
    explicit Node(qnTypeObj& type) : qnXDRObj(type) {}
    bool xdr(qnTranscriber& t) override {
        return t.xdr(&choice, 1) && ((choice & 1) == 0 || (name.xdr(t) && other.xdr(t))) &&
               ((choice & 2) == 0 || (t.xdr(&first, nullptr, type()) && t.xdr(&second, nullptr, type()))) &&
               ((choice & 4) == 0 || (t.xdr(&chars, 4) && t.xdr(&text))) &&
               ((choice & 8) == 0 || (t.xdr(&longs, 2) && t.xdr(&ints, 2) && t.xdr(&doubles, 1))) &&
               ((choice & 16) == 0 || (names.xdr(t) && pairs.xdr(t))) &&
               ((choice & 32) == 0 || (numbers.xdr(t) && shorts.xdr(t))) &&
               ((choice & 64) == 0 || t.xdr(baseType(), this, &part)) &&
               ((choice & 128) == 0 || (words.xdr(t) && t.xdr(sharedType(), this, &shared) &&
                                        t.xdr(sharedType(), this, &shared) && label.xdr(t) && label.xdr(t)));
    }
    qnTypeObj& getTypeObj() const override { return type(); }
    static void* newInstance(qnTypeObj& type) {
        Node* node = new Node(type);
        made.push_back(node);
        return node;
    }
    static void deleteInstance(void*) {}
    static bool xdr(void* object, qnTranscriber& t) { return static_cast<Node*>(object)->Node::xdr(t); }
    static bool xdrPart(void* part, qnTranscriber& t) { return t.xdr(static_cast<int*>(part), 1); }
    static qnTypeObj& type() {
        static qnTypeObj object("N", 1, newInstance, deleteInstance, xdr);
        return object;
    }
    static qnTypeObj& baseType() {
        static qnTypeObj object("B", 1, nullptr, nullptr, xdrPart);
        return object;
    }
    static bool xdrShared(void* part, qnTranscriber& t) { return static_cast<Part*>(part)->xdr(t); }
    static qnTypeObj& sharedType() {
        static qnTypeObj object("S", 1, nullptr, nullptr, xdrShared);
        return object;
    }
    unsigned char choice = 0;
    qnStr name, other;
    Node* first = nullptr;
    Node* second = nullptr;
    char* chars = nullptr;
    char* text = nullptr;
    long* longs = nullptr;
    int* ints = nullptr;
    double* doubles = nullptr;
    qnStrArray names;
    qnStrStrDictionary pairs;
    qnStrSet words;
    qnLongArray numbers;
    qnShortArray shorts;
    int part = 0;
    Part shared;
    qnStr label;

    static std::vector<Node*> made;  ///< in the current graph
};
std::vector<Node*> Node::made;

/** Looks at everything that a whole object holds. */
unsigned long use(const Node& node) {
    unsigned long sum = node.name.hash() + node.other.hash() + node.shared.label.hash() + node.label.hash();
    sum += static_cast<unsigned char>(node.label.text()[node.label.length()]);
    for (unsigned i = 0; i < node.shared.length; ++i) sum += static_cast<unsigned short>(node.shared.numbers[i]);
    if (node.chars != nullptr) sum += static_cast<unsigned char>(node.chars[3]);
    if (node.text != nullptr) sum += std::strlen(node.text);
    if (node.longs != nullptr) sum += static_cast<unsigned long>(node.longs[1]);
    if (node.ints != nullptr) sum += static_cast<unsigned long>(node.ints[1]);
    if (node.doubles != nullptr) sum += node.doubles[0] > 0;
    for (unsigned i = 0; i < node.names.length(); ++i) sum += node.names.elements()[i].hash();
    for (unsigned i = 0; i < node.numbers.length(); ++i) sum += static_cast<unsigned long>(node.numbers.elements()[i]);
    qnStrStrDictionary copy(node.pairs);
    qnStrSet united(7);
    united += node.words;
    return sum + copy.count + united.count;
}

volatile unsigned long sink;

}  // namespace

void qnFatal(const char*, ...) { std::longjmp(leave, 1); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const bool ready = [] {
        qnInitializeToolkit();
        return Node::type().version + Node::baseType().version + Node::sharedType().version != 0;
    }();
    if (!ready || size < 2) return 0;
    static const long marks[] = {0x33445566, 0x44336655, 0x55663344, 0x66554433};
    Node::made.clear();
    if (setjmp(leave) == 0) {
        // Not destroyed: a message may leave it half-way.
        qnBinaryReader* reader = new qnBinaryReader(new Input(bytes + 1, size - 1), bytes[0] & 4 ? 0x2211 : 0x1122,
                                                    marks[bytes[0] & 3], "ieee");
        for (int graph = 0; graph < 3; ++graph) {
            void* root = reader->readObject(Node::type());
            if (root == nullptr) break;
            for (const Node* node : Node::made) sink = use(*node);
            Node::made.clear();
            if (bytes[0] & 8) reader->reset();
        }
        delete reader;
    }
    return 0;
}
