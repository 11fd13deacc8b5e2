#ifndef MORVAQNDS_TESTS_VIRTUALSLOT_H
#define MORVAQNDS_TESTS_VIRTUALSLOT_H

#include <cstddef>
#include <cstring>

/**
 * Number of a virtual operation in its class's table. Programs that were compiled earlier find operations by it. A
 * destructor takes the numbers of two operations.
 */
template <class Member>
std::ptrdiff_t virtualSlot(Member member) {
    std::ptrdiff_t offset;  // of the slot, plus 1, in bytes
    std::memcpy(&offset, &member, sizeof offset);
    return (offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

#endif
