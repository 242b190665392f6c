# Every target of ours is compiled with these; a warning is an error.
add_library(vorn_warnings INTERFACE)
target_compile_options(vorn_warnings INTERFACE
    -Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror)
