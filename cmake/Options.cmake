# Compiler options that every target of this project shares: link `morvaqnds_options` privately.
add_library(morvaqnds_options INTERFACE)
target_compile_options(morvaqnds_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Werror)

if(MORVAQNDS_SANITIZE)
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(morvaqnds_options INTERFACE ${sanitizers})
    target_link_options(morvaqnds_options INTERFACE ${sanitizers})
endif()

if(MORVAQNDS_COVERAGE)
    target_compile_options(morvaqnds_options INTERFACE --coverage)
    target_link_options(morvaqnds_options INTERFACE --coverage)
endif()
