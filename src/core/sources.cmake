set(DUOMIR_CORE_SOURCES
    # pair model and file arrays
    core/dirpair.h
    core/dirpair.cpp
    core/fileentry.h
    core/textstore.h
    core/textstore.cpp
    core/comparison.h
    core/comparison.cpp
    core/syncrun.h
    core/engine.h
    core/engine.cpp

    # scanning, comparison, filters, profiles
    core/platform/dirlister.h
    core/platform/dirlister.cpp
    core/platform/anchor.h
    core/platform/anchor.cpp
    core/platform/temporaryname.h
    core/platform/temporaryname.cpp
    core/platform/coarseclock.h
    core/platform/coarseclock.cpp
    core/platform/freememory.h
    core/platform/freememory.cpp
    core/masks.h
    core/masks.cpp
    core/scanner.h
    core/scanner.cpp
    core/sortkeys.h
    core/sortkeys.cpp
    core/keytable.h
    core/keytable.cpp
    core/merge.h
    core/merge.cpp
    core/comparecommand.h
    core/comparecommand.cpp
    core/filters.h
    core/filters.cpp
    core/profilefile.h
    core/profilefile.cpp
    core/pairvalidation.h
    core/pairvalidation.cpp

    # synchronization, deletion, error log
    core/platform/fileops.h
    core/platform/errortext.cpp
    core/platform/trash.h
    core/platform/trash.cpp
    core/platform/posixfileops.h
    core/platform/posixfileops.cpp
    core/syncplan.h
    core/syncplan.cpp
    core/versioning.h
    core/versioning.cpp
    core/errorlog.h
    core/errorlog.cpp
    core/progressmodel.h
    core/progressmodel.cpp
    core/syncstats.h
    core/side.h
    core/syncpaths.h
    core/walkplaces.h
    core/copyentries.h
    core/copyentries.cpp
    core/copypipeline.h
    core/copypipeline.cpp
    core/deletionguard.h
    core/deletionguard.cpp
    core/deleteentries.h
    core/deleteentries.cpp
    core/exitstatus.h
    core/synchronize.h
    core/synchronize.cpp
    core/synccommands.h
    core/synccommands.cpp

)
list(TRANSFORM DUOMIR_CORE_SOURCES PREPEND ${CMAKE_CURRENT_LIST_DIR}/../)
