# Rules for "cpack", which makes a Debian package and an archive from the installed tree. The archive works in any directory.
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME kelbase)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "host for installer plug-ins, and their base library")
set(CPACK_PACKAGE_DESCRIPTION
"The program xcodhost loads an installer plug-in as the installer does,
delivers events to it with a directory in place of the startup volume,
reports what it changed, and checks it against the plug-in contract.
.
The package also has the plug-in, its C++ base library and the platform
layer.")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(email $ENV{DEBEMAIL}) # Debian's own tools read the same variable
if(NOT email)
    set(email kelbase@korvane.example)
endif()
set(CPACK_PACKAGE_CONTACT "Kelbase maintainers <${email}>" CACHE STRING "Maintainer of the packages: name <address>")

set(debian ${PROJECT_BINARY_DIR}/debian)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "yad | zenity | kdialog") # these show alerts in windows
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
endif()
set(shared_library "macplatform ${PROJECT_VERSION_MAJOR}")
file(WRITE ${debian}/shlibs "lib${shared_library} kelbase (>= ${PROJECT_VERSION_MAJOR}.0)\n")
file(WRITE ${debian}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${debian}/shlibs ${debian}/triggers)

string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${debian}/changelog "kelbase (${PROJECT_VERSION}) stable; urgency=medium

  * Packages of version ${PROJECT_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")
compressed(changelog ${debian}/changelog changelog.gz)

# The licence terms of the libraries whose code is compiled into the tool, from their packages.
set(terms "Copyright 2026 the Kelbase maintainers\n")
if(TARGET xcodhost)
    foreach(library libcli11-dev nlohmann-json3-dev)
        set(file /usr/share/doc/${library}/copyright)
        if(EXISTS ${file})
            file(READ ${file} own)
            string(APPEND terms "\nThe program xcodhost contains code of ${library}:\n\n${own}")
        else()
            message(STATUS "${file}: missing; do not distribute a package without these licence terms")
        endif()
    endforeach()
endif()
file(WRITE ${debian}/copyright "${terms}")
install(FILES ${changelog} ${debian}/copyright DESTINATION ${documents})

include(CPack)
