# Compiler options that every target of this project shares: link `morvaqnds_options` privately.
#
# The shared library is linked without link-time optimisation and without -Bsymbolic: a program's own definitions of
# the functions in src/platform/ win over the library's.
add_library(morvaqnds_options INTERFACE)
target_compile_options(morvaqnds_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Werror)
# Files of any size, on file systems of any width, on 32-bit machines too. No public header shows such a number.
target_compile_definitions(morvaqnds_options INTERFACE _FILE_OFFSET_BITS=64)

if(MORVAQNDS_CHECKED)
    # A checked build keeps its assertions, whatever the build type says.
    target_compile_options(morvaqnds_options INTERFACE -UNDEBUG)
endif()

if(MORVAQNDS_SANITIZE)
    set(sanitizers -fsanitize=address,undefined,float-cast-overflow -fno-sanitize-recover=all)
    target_compile_options(morvaqnds_options INTERFACE ${sanitizers} -fno-omit-frame-pointer -O1 -g1)
    target_compile_definitions(morvaqnds_options INTERFACE _GLIBCXX_ASSERTIONS)
    target_link_options(morvaqnds_options INTERFACE ${sanitizers})
endif()

if(MORVAQNDS_COVERAGE)
    target_compile_options(morvaqnds_options INTERFACE --coverage -O0)
    target_link_options(morvaqnds_options INTERFACE --coverage)
endif()
