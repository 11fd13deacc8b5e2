#include "BinaryTranscriber.h"

qnBinaryTranscriber::qnBinaryTranscriber()
    : bufferNext(buffer),
      bufferSize(BufferSize),
      bufferCount(0),
      objectTable(0),
      pendingKind(qnBRK_Data),
      pendingId(0),
      pendingTypeId(0),
      pendingVersion(0),
      pendingByteCount(0),
      pendingTypeName(nullptr) {}

qnBinaryTranscriber::~qnBinaryTranscriber() {}

void qnBinaryTranscriber::appendPending(void* item) {
    if (pendingItems.usedBytes == pendingItems.maxBytes) pendingItems.setMaxLength(2 * pendingItems.length() + 4);
    pendingItems.append(&item);
}
