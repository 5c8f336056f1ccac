# Another system, built for with the compilers of this one.
set(CMAKE_SYSTEM_NAME FreeBSD)
