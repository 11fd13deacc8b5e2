#ifndef MORVAQNDS_TESTS_HEAPWATCH_H
#define MORVAQNDS_TESTS_HEAPWATCH_H

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/SanitizedHeap.h"

/**
 * Shows what a program asks of the heap. To be included by one file of a program that stands alone: it defines the
 * program's `malloc`, `calloc`, `realloc` and `free`.
 *
 *     heapWatch::expect(__LINE__, "m4 r6 f ", [] { qnStr s("abc"); s.append("de"); });
 *     return heapWatch::failures;
 *
 * "m4" is a block of 4 bytes, "r6" one that became 6 bytes large, "f" one that was freed. A sanitizer's heap cannot be
 * watched; there the operations run and nothing is compared.
 */
namespace heapWatch {

static char requests[4096];
static bool watching = false;
static int failures = 0;

inline void note(const char* request) {
    if (std::strlen(requests) + std::strlen(request) < sizeof requests) std::strcat(requests, request);
}

inline void note(char kind, std::size_t nbytes) {
    char request[32];
    std::snprintf(request, sizeof request, "%c%lu ", kind, static_cast<unsigned long>(nbytes));
    note(request);
}

/** Runs `operation` and compares what it asks of the heap; `line` tells where a difference is. */
template <class Operation>
void expect(int line, const char* expected, Operation operation) {
    requests[0] = 0;
    watching = true;
    operation();
    watching = false;
    if (heapIsSanitized || std::strcmp(requests, expected) == 0) return;
    std::fprintf(stderr, "line %d: the heap was asked for \"%s\", not \"%s\"\n", line, requests, expected);
    ++failures;
}

}  // namespace heapWatch

#ifndef MORVAQNDS_HEAP_IS_SANITIZED

// The library must see them, although programs are compiled with hidden visibility.
#pragma GCC visibility push(default)

extern "C" {

void* __libc_malloc(std::size_t nbytes);
void* __libc_calloc(std::size_t number, std::size_t nbytes);
void* __libc_realloc(void* block, std::size_t nbytes);
void __libc_free(void* block);

void* malloc(std::size_t nbytes) noexcept {
    if (heapWatch::watching) heapWatch::note('m', nbytes);
    return __libc_malloc(nbytes);
}

// What compilers make of `malloc` and `memset`.
void* calloc(std::size_t number, std::size_t nbytes) noexcept {
    if (heapWatch::watching) heapWatch::note('m', number * nbytes);
    return __libc_calloc(number, nbytes);
}

void* realloc(void* block, std::size_t nbytes) noexcept {
    if (heapWatch::watching) heapWatch::note('r', nbytes);
    return __libc_realloc(block, nbytes);
}

void free(void* block) noexcept {
    if (heapWatch::watching && block != nullptr) heapWatch::note("f ");
    __libc_free(block);
}

}  // extern "C"

#pragma GCC visibility pop

#endif

#endif
