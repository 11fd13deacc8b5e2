// The properties of an object: a list sorted by tag, at most one for a tag.
#include "Checked.h"
#include "Obj.h"
#include "core/Heap.h"
#include "core/Watch.h"
#include "objects/PointerList.h"

namespace {

qnProperty** placesOf(qnVoidPtrArray& list) { return reinterpret_cast<qnProperty**>(list.elements()); }

/**
 * Binary search. Returns whether `tag` is listed; `where` receives its index, or on a miss the last index probed.
 * A place that is being released counts as lower than any tag: such places are at the front.
 */
bool search(qnVoidPtrArray& list, unsigned short tag, unsigned& where) {
    qnProperty* const* places = placesOf(list);
    where = 0;
    int lo = 0;
    int hi = static_cast<int>(list.length()) - 1;
    while (lo <= hi) {
        const int mid = (lo + hi) / 2;
        where = static_cast<unsigned>(mid);
        const qnProperty* probed = places[mid];
        if (probed != nullptr && probed->getTag() == tag) return true;
        if (probed != nullptr && probed->getTag() > tag) {
            hi = mid - 1;
        } else {
            lo = mid + 1;
        }
    }
    return false;
}

}  // namespace

qnObj* qnObj::setProperty(qnProperty* property) {
    MORVAQNDS_REQUIRE(property != nullptr, "qnObj::setProperty: no property");
    if (properties_ == nullptr) properties_ = heap::create<qnVoidPtrArray>("qnObj::setProperty");
    qnVoidPtrArray& list = *properties_;

    qnRetain(property);  // before the old one is let go: they may be the same
    unsigned where;
    if (search(list, property->getTag(), where)) {
        qnProperty* old = placesOf(list)[where];
        placesOf(list)[where] = property;
        qnRelease(old);
        return this;
    }

    if (where < list.length()) {
        const qnProperty* probed = placesOf(list)[where];
        if (probed == nullptr || probed->getTag() < property->getTag()) ++where;
    }
    if (where == list.length()) {
        pointers::append(list, property);
    } else {
        pointers::insert(list, property, where);
    }
    return this;
}

qnObj* qnObj::removeProperty(unsigned short tag) {
    unsigned where;
    qnProperty* property = findProperty(tag, &where);
    if (property == nullptr) return this;
    properties_->remove(where, 1);
    qnRelease(property);
    return this;
}

// Deliberate: a name without a tag looks for the property of tag 65535, which a program may have set.
qnObj* qnObj::removeProperty(const char* name) { return removeProperty(qnProperty::findTag(name)); }

qnObj* qnObj::removeAllProperties() {
    if (properties_ == nullptr) return this;
    // Each leaves its place before it is released: its release may look at the list, or change it, so what was set
    // meanwhile has another turn. It may also destroy the object.
    Watch list(properties_);
    bool again = true;
    while (again) {
        again = false;
        for (unsigned i = 0; i < properties_->length(); ++i) {
            qnProperty* property = placesOf(*properties_)[i];
            if (property == nullptr) continue;
            placesOf(*properties_)[i] = nullptr;
            qnRelease(property);
            if (!list.alive()) return this;
            again = true;
        }
    }
    properties_->resize(0);
    return this;
}

qnProperty* qnObj::findProperty(unsigned short tag, unsigned* index) const {
    unsigned where = 0;
    const bool found = properties_ != nullptr && search(*properties_, tag, where);
    if (index != nullptr) *index = where;
    return found ? placesOf(*properties_)[where] : nullptr;
}

qnProperty* qnObj::findProperty(const char* name, unsigned* index) const {
    const unsigned short tag = qnProperty::findTag(name);
    if (tag == qnProperty::NoTag) {
        if (index != nullptr) *index = 0;
        return nullptr;
    }
    return findProperty(tag, index);
}

qnProperty* qnObj::getProperty(unsigned index) const {
    if (properties_ == nullptr) return nullptr;
    MORVAQNDS_REQUIRE(index < properties_->length(), "qnObj::getProperty: index %u is not below %u", index,
                      properties_->length());
    return placesOf(*properties_)[index];
}

unsigned qnObj::getNumberOfProperties() const { return properties_ == nullptr ? 0 : properties_->length(); }
