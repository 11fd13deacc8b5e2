#include "StackBuffer.h"

#include <cstdlib>
#include <cstring>

#include "core/Heap.h"

qnStackBuffer::qnStackBuffer(unsigned increment)
    : next_(inline_),
      end_(inline_ + InlineSize),
      base_(inline_),
      increment_(increment == 0 ? unsigned(DefaultIncrement) : increment) {}

qnStackBuffer::qnStackBuffer(const qnStackBuffer& other) : base_(inline_), increment_(DefaultIncrement) {
    std::size_t capacity = static_cast<std::size_t>(other.end_ - other.base_);
    if (capacity > InlineSize) {
        base_ = static_cast<char*>(heap::allocate(capacity, "qnStackBuffer::qnStackBuffer"));
    }
    std::memcpy(base_, other.base_, other.used());
    end_ = base_ + capacity;
    next_ = base_ + other.used();
}

qnStackBuffer::~qnStackBuffer() {
    if (base_ != inline_) std::free(base_);
}

void qnStackBuffer::put(const char* p, unsigned n) {
    std::size_t room = static_cast<std::size_t>(end_ - next_);
    if (n > room) {
        bool own = heap::contains(base_, used(), p);
        std::size_t from = own ? static_cast<std::size_t>(p - base_) : 0;
        grow(n - static_cast<unsigned>(room));
        if (own) p = base_ + from;
    }
    if (n != 0) std::memmove(next_, p, n);
    next_ += n;
}

void qnStackBuffer::grow(unsigned n) {
    std::size_t usedBytes = used();
    std::size_t capacity = static_cast<std::size_t>(end_ - base_);
    std::size_t size =
        heap::checkedSize(std::uint64_t(capacity) + (n > increment_ ? n : increment_), "qnStackBuffer::grow");
    if (base_ == inline_) {
        base_ = static_cast<char*>(heap::allocate(size, "qnStackBuffer::grow"));
        std::memcpy(base_, inline_, usedBytes);
    } else {
        base_ = static_cast<char*>(heap::reallocate(base_, size, "qnStackBuffer::grow"));
    }
    end_ = base_ + size;
    next_ = base_ + usedBytes;
}
