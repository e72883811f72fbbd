# The layers, and who may link whom. Arrows point down this table only; a link that is not in it
# stops the configure step.
set(F_MAY_LINK_hostcore Qt5::Core)
set(F_MAY_LINK_hostmodel F::hostcore)
set(F_MAY_LINK_genint F::hostmodel)

add_library(f_flags INTERFACE)
target_compile_features(f_flags INTERFACE cxx_std_17)
target_compile_options(f_flags INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor)
target_compile_definitions(f_flags INTERFACE QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
if(F_WERROR)
    target_compile_options(f_flags INTERFACE -Werror)
endif()
if(F_SANITIZE)
    set(F_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=undefined
                         -fno-omit-frame-pointer)
    target_compile_options(f_flags INTERFACE ${F_SANITIZE_FLAGS} -O1)
    target_link_options(f_flags INTERFACE ${F_SANITIZE_FLAGS})
endif()

# f_add_library(<name> LINK <targets>): all sources of the calling folder, as static library.
function(f_add_library name)
    cmake_parse_arguments(A "" "" "LINK" ${ARGN})
    foreach(dep IN LISTS A_LINK)
        if(NOT dep IN_LIST F_MAY_LINK_${name})
            message(FATAL_ERROR "${name} may not link ${dep}: see cmake/FLibrary.cmake")
        endif()
    endforeach()
    file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
    add_library(${name} STATIC ${sources})
    add_library(F::${name} ALIAS ${name})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${A_LINK} PRIVATE f_flags)
    target_precompile_headers(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/pch.h)
endfunction()

# f_add_documentation(<library> <name>): puts resources/documentation/<name>.ts into the library.
function(f_add_documentation library name)
    target_sources(${library} PRIVATE ${PROJECT_SOURCE_DIR}/resources/documentation/${name}.qrc)
    set_target_properties(${library} PROPERTIES AUTORCC ON)
endfunction()

# f_add_program(<name> LINK <libraries>): a program in bin/. The classes of the libraries make
# themselves known by static initialisers, so the libraries are linked whole.
function(f_add_program name)
    cmake_parse_arguments(A "" "" "LINK;FILES" ${ARGN})
    if(NOT A_FILES)
        file(GLOB A_FILES CONFIGURE_DEPENDS *.cpp *.h)
    endif()
    add_executable(${name} ${A_FILES})
    list(TRANSFORM A_LINK PREPEND "F::" OUTPUT_VARIABLE libraries)
    string(REPLACE ";" "," whole "WHOLE_ARCHIVE;${A_LINK};${libraries}")
    set_property(TARGET ${name} PROPERTY LINK_LIBRARY_OVERRIDE "${whole}")
    target_link_libraries(${name} PRIVATE ${libraries} f_flags)
endfunction()
