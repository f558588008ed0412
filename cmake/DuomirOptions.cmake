# One interface target carries the warning flags and strict Qt defines to every target.
add_library(duomir_options INTERFACE)
target_compile_options(duomir_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Wnon-virtual-dtor)
if(DUOMIR_WERROR)
    target_compile_options(duomir_options INTERFACE -Werror)
endif()
target_compile_definitions(duomir_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_KEYWORDS
    QT_USE_QSTRINGBUILDER
    QT_DISABLE_DEPRECATED_BEFORE=0x060400
    DUOMIR_VERSION="${PROJECT_VERSION}")
if(DUOMIR_SANITIZE)
    string(REPLACE ";" "," _duomir_san "${DUOMIR_SANITIZE}")
    target_compile_options(duomir_options INTERFACE -fsanitize=${_duomir_san} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    target_link_options(duomir_options INTERFACE -fsanitize=${_duomir_san})
endif()
