# What the library says about itself: version text, build label, build date.
#
# The date is that of SOURCE_DATE_EPOCH where it is set, else of the commit, else of this build's main file, so that
# one state of the sources always gives one library.
set(MORVAQNDS_BUILD_LABEL "" CACHE STRING "Label in the library's identity line; empty for a shipped build")

if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
    execute_process(
        COMMAND git -C ${PROJECT_SOURCE_DIR} log -1 --format=%ct
        OUTPUT_VARIABLE commit_seconds
        OUTPUT_STRIP_TRAILING_WHITESPACE
        ERROR_QUIET
        RESULT_VARIABLE git_result)
    if(git_result STREQUAL "0" AND commit_seconds MATCHES "^[0-9]+$")
        set(ENV{SOURCE_DATE_EPOCH} ${commit_seconds})
        string(TIMESTAMP MORVAQNDS_BUILD_DATE "%Y-%m-%d" UTC)
        unset(ENV{SOURCE_DATE_EPOCH})
    else()
        file(TIMESTAMP ${PROJECT_SOURCE_DIR}/CMakeLists.txt MORVAQNDS_BUILD_DATE "%Y-%m-%d" UTC)
    endif()
else()
    string(TIMESTAMP MORVAQNDS_BUILD_DATE "%Y-%m-%d" UTC)
endif()

target_compile_definitions(morvaqnds PRIVATE
    MORVAQNDS_VERSION_TEXT="${PROJECT_VERSION}"
    MORVAQNDS_BUILD_LABEL="${MORVAQNDS_BUILD_LABEL}"
    MORVAQNDS_BUILD_DATE="${MORVAQNDS_BUILD_DATE}")
