set(DUOMIR_BASE_SOURCES
    base/interaction.h
    base/nativename.h
    base/nativename.cpp
    base/casefold.h
    base/inifile.h
    base/inifile.cpp
    base/timelag.h
    base/timelag.cpp
    base/date.h
    base/cancelsignals.h
    base/cancelsignals.cpp
)
list(TRANSFORM DUOMIR_BASE_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
