// Says which build of the library it was compiled for; with an argument, ends through the library.
#include <Fatal.h>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc > 1) qnFatal("consumer: %s", argv[1]);
#ifdef MORVAQNDS_CHECKED
    std::puts("checked");
#else
    std::puts("default");
#endif
    return 0;
}
