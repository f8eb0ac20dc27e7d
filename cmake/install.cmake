# What "cmake --install" delivers. No place of this machine goes into it: the tree may be moved, and a program in it finds its
# libraries from where it lies itself.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# compressed(RESULT SOURCE NAME): a file NAME, made from SOURCE with the rest of the build. Debian wants some so.
function(compressed result source name)
    set(output ${PROJECT_BINARY_DIR}/${name})
    add_custom_command(OUTPUT ${output} COMMAND gzip -9nc ${source} > ${output} DEPENDS ${source} VERBATIM)
    add_custom_target(make-${name} ALL DEPENDS ${output})
    set(${result} ${output} PARENT_SCOPE)
endfunction()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Kelbase)

# The library and its platform, which on a Mac is the system
install(TARGETS Kelbase EXPORT Kelbase FILE_SET HEADERS INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(APPLE)
    install(TARGETS macplatform EXPORT Kelbase)
    set(platform_libraries "-framework CoreFoundation -framework Carbon -framework AppKit -lobjc")
else()
    set(platform_headers ${CMAKE_INSTALL_INCLUDEDIR}/macplatform) # <sys/...> and others must not stand among a system's own
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

# The plug-in, for one who delivers it and for one who wants to try the tool
set(contents ${CMAKE_INSTALL_LIBDIR}/kelbase/PostInstall.bundle/Contents)
install(TARGETS PostInstall DESTINATION ${contents}/$<IF:$<PLATFORM_ID:Darwin>,MacOS,Linux>)
install(FILES ${PROJECT_BINARY_DIR}/PostInstall.bundle/Contents/Info.plist
    ${PROJECT_BINARY_DIR}/PostInstall.bundle/Contents/PkgInfo DESTINATION ${contents})
set_target_properties(PostInstall PROPERTIES INSTALL_RPATH $ORIGIN/../../../..) # out of the bundle, to ${CMAKE_INSTALL_LIBDIR}
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
