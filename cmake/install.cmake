# Rules for "cmake --install". The installed tree has no absolute paths and can be moved: a program finds its libraries relative
# to its own path.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# compressed(RESULT SOURCE NAME): compresses SOURCE to the file NAME in the build directory and stores its path in RESULT. Debian
# requires this for manual pages and changelogs.
function(compressed result source name)
    set(output ${PROJECT_BINARY_DIR}/${name})
    add_custom_command(OUTPUT ${output} COMMAND gzip -9nc ${source} > ${output} DEPENDS ${source} VERBATIM)
    add_custom_target(make-${name} ALL DEPENDS ${output})
    set(${result} ${output} PARENT_SCOPE)
endfunction()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Kelbase)

# The library and its platform. On a Mac the platform is the system.
install(TARGETS Kelbase EXPORT Kelbase FILE_SET HEADERS INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(APPLE)
    install(TARGETS macplatform EXPORT Kelbase)
    set(platform_libraries "-framework CoreFoundation -framework Carbon -framework AppKit -lobjc")
else()
    set(platform_headers ${CMAKE_INSTALL_INCLUDEDIR}/macplatform) # <sys/...> and other headers must not hide those of the system
    install(TARGETS macplatform EXPORT Kelbase INCLUDES DESTINATION ${platform_headers})
    install(DIRECTORY platform/include/ DESTINATION ${platform_headers} FILES_MATCHING PATTERN *.h)
    set(platform_libraries -lmacplatform)
endif()
install(EXPORT Kelbase FILE KelbaseTargets.cmake NAMESPACE Kelbase:: DESTINATION ${package_folder})
configure_package_config_file(cmake/KelbaseConfig.cmake.in KelbaseConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(KelbaseConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KelbaseConfig.cmake ${PROJECT_BINARY_DIR}/KelbaseConfigVersion.cmake
    DESTINATION ${package_folder})

file(RELATIVE_PATH prefix_from_here /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/kelbase.pc.in kelbase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kelbase.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/kelbase)
install(FILES README.md DESTINATION ${documents})
install(FILES CHANGELOG.md DESTINATION ${documents} OPTIONAL)
install(DIRECTORY docs/ DESTINATION ${documents} FILES_MATCHING PATTERN *.md)

if(NOT KELBASE_TOOLS)
    return()
endif()

# The plug-in, as a product and as an example for the tool
set(contents ${CMAKE_INSTALL_LIBDIR}/kelbase/PostInstall.bundle/Contents)
install(TARGETS PostInstall DESTINATION ${contents}/$<IF:$<PLATFORM_ID:Darwin>,MacOS,Linux>)
install(FILES ${PROJECT_BINARY_DIR}/PostInstall.bundle/Contents/Info.plist
    ${PROJECT_BINARY_DIR}/PostInstall.bundle/Contents/PkgInfo DESTINATION ${contents})
set_target_properties(PostInstall PROPERTIES INSTALL_RPATH $ORIGIN/../../../..) # from Contents/Linux up to ${CMAKE_INSTALL_LIBDIR}
if(APPLE)
    return()
endif()
if(KELBASE_MACOS)
    install(PROGRAMS ${PROJECT_BINARY_DIR}/PostInstall.bundle/Contents/MacOS/PostInstall DESTINATION ${contents}/MacOS)
endif()

# The host tool
file(RELATIVE_PATH libraries_from_programs /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(xcodhost PROPERTIES INSTALL_RPATH $ORIGIN/${libraries_from_programs})
install(TARGETS xcodhost)
compressed(manual ${PROJECT_SOURCE_DIR}/docs/xcodhost.1 xcodhost.1.gz)
install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES xcodhost/completion.bash DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions RENAME xcodhost)
