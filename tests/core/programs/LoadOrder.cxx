// A program whose own static objects use the library before main: everything that a registration touches must be ready.
#include <morvaqnds.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    ++failures;
}

class Early : public qnXDRObj {
public:
    Early() {}
    explicit Early(qnTypeObj& type) : qnXDRObj(type) {}
    static void* newInstance(qnTypeObj& type) { return new Early(type); }
    static void deleteInstance(void* object) { delete static_cast<Early*>(object); }
    static bool xdr(void*, qnTranscriber&) { return true; }
};

/** Uses strings, arrays, dictionaries, sets, types and orders while the program is still being loaded. */
struct BeforeMain {
    BeforeMain() {
        qnStr text("early");
        text.append(" bird");
        expect(text == "early bird", "strings work");
        expect(qnStr().text() == &qnStr::emptyString, "the empty buffer is shared");
        qnStrArray names;
        names.append(&text);
        expect(names.find(&text, 0) == 0, "arrays work");
        qnStrStrDictionary pairs;
        pairs.addInternal(&text, &text);
        expect(pairs.count == 1, "dictionaries work");
        qnStrSet words;
        words.add(&text);
        expect(words.contains(&text), "sets work");
        expect(qnTypeObj::findType("SET") == &qnStrSet_type, "sets are registered");
        expect(qnTypeObj::findType("ARRAY") == &qnStrArray_type, "the string array registered last");
        expect(qnTypeObj::findType("qnStr") == &qnStr_type, "types are registered");
        expect(qn_toolkitGlobalOrder != nullptr && qn_toolkitGlobalOrder->entries.length() == 2, "orders exist");
        expect(qn_theDebugger == nullptr, "nothing is constructed yet");
        std::FILE* file = std::fopen("/proc/self/exe", "r");
        qnStdioStream stream(file, qnStream::Read);
        expect(qnTranscriber::readers == nullptr && qnTranscriber::getReader(&stream) == nullptr, "no readers yet");
        expect(file != nullptr && std::ftell(file) == 0, "nothing is read for a reader that there is not");
    }
    /** Runs after main. */
    ~BeforeMain() {
        qnStr name("ARRAY");
        expect(qnTypeObj::findType(name) == &qnStrArray_type, "types stay registered to the end");
        qnStrStrDictionary pairs;
        expect(*static_cast<qnStr*>(pairs.findCreate(&name)) == "", "dictionaries work to the end");
        expect(qn_toolkitGlobalOrder->entries.length() == 2, "orders stay to the end");
        if (failures != 0) _exit(1);
    }
};
// Before every other static object of the program.
__attribute__((init_priority(101))) BeforeMain beforeMain;

/** Dictionaries, arrays and iterators that are static objects themselves. */
qnStrStrDictionary staticPairs(5);
qnVoidPtrDict staticPointers;
qnStrArray staticNames;
qnStr staticName("a static name");
bool filled = (staticPairs.addInternal(&staticName, &staticName), staticPointers.findCreate(&staticName),
               staticNames.append(&staticName), true);
qnStrStrDictionaryIter staticIter(staticPairs);

qnTypeObj Early_type("Early", 1, Early::newInstance, Early::deleteInstance, Early::xdr);

std::string steps;
void make() { steps += "make "; }
void drop() { steps += "drop "; }
qnOrderedGlobal* needs[] = {&qnOG_Transcriber, nullptr};
qnOrderedGlobal global(make, drop, needs, 2);

}  // namespace

int main() {
    expect(filled && staticPairs.count == 1 && staticPointers.count == 1 && staticNames.length() == 1,
           "static containers");
    expect(*static_cast<qnStr*>(staticIter.getKey()) == "a static name", "static iterators");
    expect(qnTypeObj::findType("Early") == &Early_type, "the program's own type is registered");
    expect(steps.empty(), "nothing is constructed at load");
    qnInitializeToolkit();
    expect(steps == "make ", "the program's global is constructed");
    expect(qn_theDebugger != nullptr, "the library's globals are constructed");
    expect(qnTranscriber::readers != nullptr && qnTranscriber::readers->count == 1, "the binary reader is registered");
    qnInitializeToolkit();
    expect(steps == "make ", "once");
    qnCleanupGlobalOrderings();
    qnCleanupGlobalOrderings();
    expect(steps == "make drop ", "and dropped once");
    return failures;
}
