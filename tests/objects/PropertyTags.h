#ifndef MORVAQNDS_TESTS_PROPERTYTAGS_H
#define MORVAQNDS_TESTS_PROPERTYTAGS_H

#include <vector>

#include "Obj.h"

/** The tags of an object's properties in their order; -1 where one is being released. */
inline std::vector<int> tagsOf(const qnObj& object) {
    std::vector<int> tags;
    for (unsigned i = 0; i < object.getNumberOfProperties(); ++i) {
        const qnProperty* property = object.getProperty(i);
        tags.push_back(property == nullptr ? -1 : property->getTag());
    }
    return tags;
}

#endif
