set(DUOMIR_CORE_SOURCES
    # pair model and file arrays
    core/dirpair.h
    core/dirpair.cpp
    core/fileentry.h
    core/interaction.h
    core/engine.h
    core/engine.cpp

    # scanning, comparison, filters, profiles
    core/platform/nativename.h
    core/platform/nativename.cpp
    core/platform/dirlister.h
    core/platform/dirlister.cpp
    core/casefold.h
    core/masks.h
    core/masks.cpp
    core/scanner.h
    core/scanner.cpp
    core/sortkeys.h
    core/sortkeys.cpp
    core/merge.h
    core/merge.cpp
    core/comparecommand.h
    core/comparecommand.cpp
    core/filters.h
    core/filters.cpp

    # synchronization, deletion, error log

)
list(TRANSFORM DUOMIR_CORE_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
