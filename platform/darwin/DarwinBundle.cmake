# Functions that build code for 32-bit Intel macOS 10.6 and later on this system.
#
# No packaged linker makes a correct file for that system, so no linker is used. All sources, including those of the C++
# library, are compiled to one module of bitcode. The module is compiled to one object file, and the object file is converted to
# the executable of the bundle.
include_guard(GLOBAL)

foreach(tool clang++-14 llvm-link-14 opt-14 llvm-objdump-14 llvm-nm-14 llvm-dwarfdump-14)
    find_program(DARWIN_${tool} ${tool})
    if(NOT DARWIN_${tool})
        message(FATAL_ERROR "${tool}: missing, but the Mac's executable needs it (packages clang-14 and llvm-14); "
            "run scripts/build-macos-bundle, which installs missing packages")
    endif()
endforeach()

set(DARWIN_RUNTIME ${PROJECT_SOURCE_DIR}/build/cxx-runtime CACHE PATH "Sources of the C++ library for the Mac")
if(NOT EXISTS ${DARWIN_RUNTIME}/libcxxabi/src/cxa_personality.cpp)
    message(FATAL_ERROR "${DARWIN_RUNTIME}: the sources of the C++ library are missing, but the Mac's executable needs them; "
        "run scripts/get-cxx-runtime, which downloads them once")
endif()

set(DARWIN_FOLDER ${CMAKE_CURRENT_LIST_DIR} CACHE INTERNAL "")
set(DARWIN_FLAGS -target i386-apple-macosx10.6 -O2 -fPIC -fvisibility=hidden -fvisibility-inlines-hidden
    -fno-stack-protector -nostdinc++ -nostdlibinc -isystem ${DARWIN_RUNTIME}/libcxx/include
    -isystem ${DARWIN_RUNTIME}/libcxxabi/include -isystem ${DARWIN_FOLDER}/include CACHE INTERNAL "")
set(writer write_bundle bundle_layout load_commands loader_tables macho_format macho_object)
list(TRANSFORM writer PREPEND ${DARWIN_FOLDER}/)
list(TRANSFORM writer APPEND .py)
set(DARWIN_WRITER ${writer} CACHE INTERNAL "")
file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${DARWIN_FOLDER}/include/*)
set(DARWIN_HEADERS ${headers} CACHE INTERNAL "")

# darwin_bitcode(LIST SOURCE FLAG...): compiles a source to a file of bitcode and appends the path of the file to LIST.
function(darwin_bitcode list source)
    file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${source})
    string(REPLACE "../" "" name ${name})
    set(output ${CMAKE_CURRENT_BINARY_DIR}/bitcode/${name}.bc)
    cmake_path(GET output PARENT_PATH folder)
    file(MAKE_DIRECTORY ${folder})
    add_custom_command(OUTPUT ${output}
        COMMAND ${DARWIN_clang++-14} ${DARWIN_FLAGS} ${ARGN} -MD -MF ${output}.d -c ${source} -emit-llvm -o ${output}
        DEPENDS ${source} ${DARWIN_HEADERS}
        DEPFILE ${output}.d
        COMMENT "Building bitcode for the Mac: ${name}"
        VERBATIM)
    set(${list} ${${list}} ${output} PARENT_SCOPE)
endfunction()

# darwin_own_bitcode(LIST SOURCE FLAG...): does the same for a source of this tree, with its warnings and include directories.
function(darwin_own_bitcode list source)
    darwin_bitcode(${list} ${source} -std=c++17 -Wall -Wextra -Wno-multichar $<$<BOOL:${KELBASE_WERROR}>:-Werror> ${ARGN}
        -isystem ${PROJECT_SOURCE_DIR}/platform/include -I${PROJECT_SOURCE_DIR}/src -I${PROJECT_SOURCE_DIR})
    set(${list} ${${list}} PARENT_SCOPE)
endfunction()

# darwin_bundle(TARGET EXECUTABLE BITCODE...): makes the executable of a bundle that exports the plug-in's three entry points.
function(darwin_bundle target executable)
    set(exports ${PROJECT_SOURCE_DIR}/PostInstall/exports.txt)
    set(imports ${DARWIN_FOLDER}/imports.txt)
    file(STRINGS ${exports} exported)
    list(TRANSFORM exported REPLACE "^_" "")
    list(JOIN exported "," exported)
    get_target_property(runtime MacRuntime MODULE)
    set(module ${CMAKE_CURRENT_BINARY_DIR}/${target})
    cmake_path(GET executable PARENT_PATH folder)
    file(MAKE_DIRECTORY ${folder})
    add_custom_command(OUTPUT ${executable}
        COMMAND ${DARWIN_llvm-link-14} ${ARGN} ${runtime} -o ${module}.all.bc
        COMMAND ${DARWIN_opt-14} -passes=internalize,globaldce -internalize-public-api-list=${exported}
            ${module}.all.bc -o ${module}.bc
        COMMAND ${DARWIN_clang++-14} ${DARWIN_FLAGS} -Wno-unused-command-line-argument -c ${module}.bc -o ${module}.o
        COMMAND ${DARWIN_FOLDER}/write_bundle.py ${module}.o ${imports} ${exports} ${executable}
        DEPENDS ${ARGN} MacRuntime ${runtime} ${imports} ${exports} ${DARWIN_WRITER}
        COMMENT "Making ${executable}"
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS ${executable})
endfunction()
