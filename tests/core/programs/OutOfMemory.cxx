// Exhausted memory ends the process with one line that names the operation, whether a block or an object was wanted.
// Each case runs in a process of its own, whose memory is limited and then used up.
#include <morvaqnds.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/SanitizedHeap.h"

namespace {

int failures = 0;

/** Leaves no block of any size. False where the limit is not in force. */
bool useUpMemory() {
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    unsigned long pages = 0;
    if (file == nullptr || std::fscanf(file, "%lu", &pages) != 1) return false;
    std::fclose(file);
    rlimit limit;
    limit.rlim_cur = limit.rlim_max = (static_cast<rlim_t>(pages) + 1024) * static_cast<rlim_t>(getpagesize());
    if (setrlimit(RLIMIT_AS, &limit) != 0) return false;
    std::size_t total = 0;
    for (std::size_t nbytes = std::size_t(1) << 20; nbytes > 0; nbytes = nbytes > 2048 ? nbytes / 2 : nbytes - 1) {
        while (std::malloc(nbytes) != nullptr) {
            total += nbytes;
            if (total > std::size_t(64) << 20) return false;
        }
    }
    return true;
}

enum : int { Survived = 3, NoLimit = 4 };

/**
 * Runs `operation` without memory; `prepare` runs before, and may keep a block back that it frees in the operation. An
 * empty message stands for an end in silence.
 */
template <class Prepare, class Operation>
void expectFatal(const char* message, Prepare prepare, Operation operation) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        prepare();
        if (!useUpMemory()) _exit(NoLimit);
        operation();
        _exit(Survived);
    }
    close(ends[1]);
    std::string printed;
    char buffer[256];
    ssize_t n;
    while ((n = read(ends[0], buffer, sizeof buffer)) > 0) printed.append(buffer, static_cast<std::size_t>(n));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == NoLimit) return;
    const std::string expected = *message == 0 ? std::string() : std::string(message) + "\n";
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT && printed == expected) return;
    std::fprintf(stderr, "expected \"%s\", got status %d and \"%s\"\n", message, status, printed.c_str());
    ++failures;
}

template <class Operation>
void expectFatal(const char* message, Operation operation) {
    expectFatal(
        message, [] {}, operation);
}

void texts() {
    static qnStr s("abc"), empty;
    static char bytes[2000];
    expectFatal("qnStr::qnStr: out of memory", [] { qnStr t("abc"); });
    expectFatal("qnStr::qnStr: out of memory", [] { qnStr t(s); });
    expectFatal("qnStr::qnStr: out of memory", [] { qnStr t(3u); });
    expectFatal("qnStr::qnStr: out of memory", [] { qnStr t(7); });
    expectFatal("qnStr::resizeInternal: out of memory", [] { empty.append("abc"); });
    expectFatal("qnStr::resizeInternal: out of memory", [] { s.resize(10000); });
    expectFatal("qnStr::resizeInternal: out of memory", [] { empty.format("%d", 7); });
    expectFatal("qnStr::vformat: out of memory", [] { empty.format("%1000d", 7); });
    expectFatal("qnTempStr::qnTempStr: out of memory", [] { qnTempStr t(bytes, 50, bytes, 50); });
    expectFatal("qnTempStr::concat: out of memory", [] { qnTempStr(bytes, 50, bytes, 40).concat(bytes, 20); });
    expectFatal("qnStackBuffer::grow: out of memory", [] { qnStackBuffer().put(bytes, 1001); });
}

void containers() {
    static qnStr empty;
    static void* kept = nullptr;
    static void* value = nullptr;
    static qnVoidPtrDict pointers(1);
    static qnStrStrDictionary pairs(1);
    expectFatal("qnDictionary::addInternal: out of memory", [] { pointers.addInternal(&empty, &value); });
    // The entry finds a block, its link does not.
    expectFatal(
        "qnDictionary::addInternal: out of memory", [] { kept = std::malloc(sizeof(qnStr) + sizeof(void*)); },
        [] {
            std::free(kept);
            pointers.addInternal(&empty, &value);
        });
    expectFatal(
        "qnDictionary::addInternal: out of memory", [] { kept = std::malloc(2 * sizeof(qnStr)); },
        [] {
            std::free(kept);
            pairs.findCreate(&empty);
        });
    static GenericList list;
    expectFatal("GenericList::append: out of memory", [] { list.append(&list); });
    static HashTable table;
    expectFatal("HashTable::addElement: out of memory", [] { table.addElement(7); });
}

void sets() {
    static qnStr empty;
    static void* kept = nullptr;
    static qnStrSet set(1);
    expectFatal("qnSet::add: out of memory", [] { set.add(&empty); });
    // The entry finds a block, its link does not.
    expectFatal(
        "qnSet::add: out of memory", [] { kept = std::malloc(sizeof(qnStr)); },
        [] {
            std::free(kept);
            set.add(&empty);
        });
    expectFatal("qnStrSet::newInstance: out of memory", [] { qnStrSet_type.newInstance(qnStrSet_type); });
}

int internNothing(NameSpace*) { return 0; }

// Atoms end the process without a word.
void atoms() {
    static void *keptNode = nullptr, *keptName = nullptr;
    static char name[2001];
    std::memset(name, 'n', sizeof name - 1);
    static NameSpace names(internNothing, 1);
    expectFatal("", [] { NameSpace none(internNothing, 0); });
    expectFatal("", [] { names.makeAtom(1, name, 2000, 1); });
    // The node finds a block, the copy of its name does not.
    expectFatal(
        "", [] { keptNode = std::malloc(sizeof(NameSpace::Node)); },
        [] {
            std::free(keptNode);
            names.makeAtom(1, name, 2000, 1);
        });
    // Both find a block, the larger table does not.
    expectFatal(
        "",
        [] {
            keptNode = std::malloc(sizeof(NameSpace::Node));
            keptName = std::malloc(11);
        },
        [] {
            std::free(keptNode);
            std::free(keptName);
            names.makeAtom(250, name, 10, 1);
        });
}

void patterns() {
    static char name[2001];
    std::memset(name, 'n', sizeof name - 1);
    expectFatal("qnSLinearPattern::qnSLinearPattern: out of memory", [] { qnSLinearPattern pattern(name); });
    expectFatal("pathbasename: out of memory", [] { pathbasename(name); });
    expectFatal("pathdirname: out of memory", [] { pathdirname("a/b"); });
    expectFatal("pathexpandtilde: out of memory", [] { pathexpandtilde(name); });
    expectFatal("symbolicLinkExtendedName: out of memory", [] { symbolicLinkExtendedName("/proc/self/exe", 2000); });
    expectFatal("environmentVariableExtendedName: out of memory", [] { environmentVariableExtendedName("a", 2000); });
    // Not so an expression, which then is like one that does not compile.
    expectFatal("", [] {
        if (qnRegEx(name).findBuffer(name, 2000) == -2) std::abort();
    });
}

void objects() {
    expectFatal("qnStr::newInstance: out of memory", [] { qnStr_type.newInstance(qnStr_type); });
    expectFatal("qnXDRObj::newInstance: out of memory", [] { qnXDRObj_type.newInstance(qnXDRObj_type); });
    expectFatal("qnArray::newInstance: out of memory", [] { qnIntArray_type.newInstance(qnIntArray_type); });
    expectFatal("qnArray::newInstance: out of memory", [] { qnStrArray_type.newInstance(qnStrArray_type); });
    expectFatal("qnStrStrDictionary::newInstance: out of memory",
                [] { qnStrStrDictionary_type.newInstance(qnStrStrDictionary_type); });
    static qnStdioStream stream("/dev/null", qnStream::Write, 0);
    expectFatal("qnTranscriber::getWriter: out of memory", [] { qnTranscriber::getWriter(&stream); });
}

}  // namespace

int main() {
    if (heapIsSanitized) return 0;
    qnInitializeToolkit();
    texts();
    containers();
    sets();
    atoms();
    patterns();
    objects();
    return failures;
}
