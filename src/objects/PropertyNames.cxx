// The table of property names: the name of tag t is its element t.
#include <cstring>

#include "Fatal.h"
#include "Property.h"
#include "StrArray.h"
#include "core/Heap.h"

namespace {

/** Tags that can be handed out. */
constexpr unsigned MaxTags = 65534;
/** Names that the table has room for beyond those in it. */
constexpr unsigned NameIncrement = 50;

qnStrArray* qn_propertyNames;
unsigned short nextTag;
unsigned short firstTag;  // the first tag of the present table; lower ones were named in tables that have gone

}  // namespace

void qnProperty::constructPropertyNames() {
    if (qn_propertyNames != nullptr) return;
    qn_propertyNames = heap::create<qnStrArray>("qnProperty::constructPropertyNames");
    firstTag = nextTag;
}

void qnProperty::destroyPropertyNames() {
    delete qn_propertyNames;
    qn_propertyNames = nullptr;
}

unsigned short qnProperty::findTag(const char* name) {
    if (qn_propertyNames == nullptr) return NoTag;
    const qnStr* names = qn_propertyNames->elements();
    const unsigned n = qn_propertyNames->length();
    if (name == nullptr) name = "";
    const std::size_t slength = std::strlen(name) + 1;
    for (unsigned tag = firstTag; tag < n; ++tag) {
        if (names[tag].slength == slength && std::memcmp(names[tag].data, name, slength) == 0) {
            return static_cast<unsigned short>(tag);
        }
    }
    return NoTag;
}

unsigned short qnProperty::allocNewTag(const char* name) {
    constructPropertyNames();
    if (nextTag >= MaxTags) qnFatal("qnProperty::allocNewTag: more than %u tags", MaxTags);
    const unsigned short tag = nextTag++;
    qnStrArray& names = *qn_propertyNames;
    const qnStr text(name);
    const qnStr none;
    while (tag >= names.length()) {
        names.setMaxLength(names.length() + NameIncrement);  // Deliberate: with every name
        names.append(names.length() == tag ? &text : &none);
    }
    return tag;
}
