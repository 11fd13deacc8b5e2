#ifndef MORVAQNDS_TESTS_SANITIZEDHEAP_H
#define MORVAQNDS_TESTS_SANITIZEDHEAP_H

/**
 * Whether the program's heap is a sanitizer's, which can be neither watched nor exhausted, and which knows the exact
 * size of every block: `heapIsSanitized`, and the macro MORVAQNDS_HEAP_IS_SANITIZED where it is.
 */
#if defined(__SANITIZE_ADDRESS__)
#define MORVAQNDS_HEAP_IS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MORVAQNDS_HEAP_IS_SANITIZED
#endif
#endif

#ifdef MORVAQNDS_HEAP_IS_SANITIZED
constexpr bool heapIsSanitized = true;
#else
constexpr bool heapIsSanitized = false;
#endif

#endif
