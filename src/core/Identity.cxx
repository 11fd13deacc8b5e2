#include "Identity.h"

#include "Platform.h"

#ifndef MORVAQNDS_VERSION_TEXT
#define MORVAQNDS_VERSION_TEXT "unversioned"
#endif
#ifndef MORVAQNDS_BUILD_LABEL
#define MORVAQNDS_BUILD_LABEL ""
#endif
#ifndef MORVAQNDS_BUILD_DATE
#define MORVAQNDS_BUILD_DATE "undated"
#endif

namespace {

constexpr char Name[] = "libmorvaqnds";
constexpr int NameWidth = 33;
constexpr char Version[] = MORVAQNDS_VERSION_TEXT;
constexpr char Label[] = MORVAQNDS_BUILD_LABEL;
constexpr char Date[] = MORVAQNDS_BUILD_DATE;
constexpr bool HasLabel = sizeof Label > 1;

/** Hands the identity line to a message service, whose first argument is `destination`. */
template <class Service, class Destination>
int report(Service service, Destination destination) {
    if (HasLabel) {
        return service(destination, "%-*s %s \"%s\" (%s)\n", -1, NameWidth, Name, Version, Label, Date);
    }
    return service(destination, "%-*s %s (%s)\n", -1, NameWidth, Name, Version, Date);
}

}  // namespace

int libmorvaqnds_print_verid() { return report(message_print, 0); }

int libmorvaqnds_sprintf_verid(char* buffer) { return report(message_sprintf, buffer); }
