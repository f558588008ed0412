set(DUOMIR_CORE_SOURCES
    # pair model and file arrays
    core/dirpair.h
    core/dirpair.cpp
    core/fileentry.h
    core/interaction.h
    core/engine.h
    core/engine.cpp

    # scanning, comparison, filters, profiles

    # synchronization, deletion, error log

)
list(TRANSFORM DUOMIR_CORE_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
