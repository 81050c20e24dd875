# Builds and runs a host that has the library's sources inside its own build.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

file(REMOVE_RECURSE ${scratch})

# In a folder whose name has blanks, and without what a host does not need of it.
set(copy "${scratch}/their  libraries/Tobrel Scripts")
foreach(part IN ITEMS CMakeLists.txt cmake include platform src)
    file(COPY ${library}/${part} DESTINATION ${copy})
endforeach()

set(arguments
    -D library=${copy}
    -D interpreterFolder=${interpreterFolder}
    -D interpreterLibrary=${interpreterLibrary})

run(${CMAKE_COMMAND} -S ${source}/addSubdirectory -B ${scratch}/fetched
    ${hostArguments} -D fetched=ON ${arguments})

# Not optimised: the library is compiled once more for this.
run_consumer(addSubdirectory "${scratch}/host build" -D CMAKE_BUILD_TYPE= ${arguments})

# What a host installs is its own business.
run(${CMAKE_COMMAND} --install "${scratch}/host build" --prefix ${scratch}/prefix)
file(GLOB_RECURSE installed ${scratch}/prefix/*)
if(installed)
    message(FATAL_ERROR "The library was installed along with the host: ${installed}")
endif()

file(REMOVE_RECURSE ${scratch})
