set(DUOMIR_SETTINGS_SOURCES
    settings/settings.h
    settings/launcher.h
    settings/launcher.cpp
)
list(TRANSFORM DUOMIR_SETTINGS_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
