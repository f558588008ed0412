set(DUOMIR_SETTINGS_SOURCES
    settings/settings.h
    settings/commandline.h
    settings/commandline.cpp
    settings/settingsfile.h
    settings/settingsfile.cpp
    settings/launcher.h
    settings/launcher.cpp
)
list(TRANSFORM DUOMIR_SETTINGS_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
