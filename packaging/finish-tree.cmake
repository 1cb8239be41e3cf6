# Run by cpack on the installed files before it packs them: what Debian's own packaging tools do to a
# tree. Documents are compressed, symbols that only a debugger needs go.
execute_process(COMMAND sh -euc [[
    umask 022
    find . -path '*/man/*' -type f -exec gzip -9n {} +
    find . -path '*/doc/*' -name 'changelog*' -type f -exec gzip -9n {} +
    find . -path '*/bin/*' -type f -exec strip -R .comment -R .note {} +
    find . -name '*.a' -exec strip -gD -R .comment -R .note {} +
]] WORKING_DIRECTORY ${CPACK_TEMPORARY_DIRECTORY} COMMAND_ERROR_IS_FATAL ANY)
