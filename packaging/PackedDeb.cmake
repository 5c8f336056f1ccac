# cpack runs this after packing.

# The umask changes the outer archive of a .deb that cpack writes. So Debian's own tool packs the .deb again.
foreach(deb IN LISTS CPACK_PACKAGE_FILES)
    if(deb MATCHES "[.]deb$")
        set(tree "${CPACK_TEMPORARY_DIRECTORY}.again")
        file(REMOVE_RECURSE "${tree}")
        execute_process(
            COMMAND sh -c "umask 022 && dpkg-deb --raw-extract \"$1\" \"$2\" &&
                dpkg-deb --root-owner-group -Zgzip --build \"$2\" \"$1\"" sh "${deb}" "${tree}"
            OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    endif()
endforeach()
