set(DUOMIR_LOCALIZATION_SOURCES
    localization/language.h
    localization/language.cpp
)
list(TRANSFORM DUOMIR_LOCALIZATION_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
