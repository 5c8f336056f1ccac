# Cross-compiles for another system, with this system's compilers.
set(CMAKE_SYSTEM_NAME FreeBSD)
