set(DUOMIR_SETTINGS_SOURCES
    settings/settings.h
    settings/inifile.h
    settings/inifile.cpp
)
list(TRANSFORM DUOMIR_SETTINGS_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
