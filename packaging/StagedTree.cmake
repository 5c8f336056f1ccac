# cpack runs this between installing and packing.

# Debian's policy applies to the .deb only.
if(CPACK_GENERATOR STREQUAL "DEB")
    # Without dpkg-shlibdeps, cpack would make a .deb without dependencies.
    find_program(shlibdeps dpkg-shlibdeps)
    if(NOT shlibdeps)
        message(FATAL_ERROR "There is no dpkg-shlibdeps here. It finds the dependencies of the .deb. "
            "Install Debian's dpkg-dev, or make the .tar.gz alone: cpack -G TGZ")
    endif()

    # The .deb uses the system's Qt, even if it was built with another one.
    file(GLOB programs "${CPACK_TEMPORARY_DIRECTORY}/usr/bin/*")
    foreach(program IN LISTS programs)
        file(RPATH_REMOVE FILE "${program}")
    endforeach()

    set(share "${CPACK_TEMPORARY_DIRECTORY}/usr/share")
    set(doc "${share}/doc/${CPACK_PACKAGE_NAME}")
    file(COPY "${CMAKE_CURRENT_LIST_DIR}/debian/" DESTINATION "${doc}"
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    file(GLOB pages "${share}/man/man*/*")
    execute_process(COMMAND gzip -9 -n "${doc}/changelog" ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()

# The permissions do not depend on the umask.
file(CHMOD_RECURSE "${CPACK_TEMPORARY_DIRECTORY}"
    DIRECTORY_PERMISSIONS
        OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
