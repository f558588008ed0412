set(DUOMIR_CORE_SOURCES
    core/dirpair.cpp
    core/fileentry.h
    core/interaction.h
    core/engine.h
    core/engine.cpp
)
list(TRANSFORM DUOMIR_CORE_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
