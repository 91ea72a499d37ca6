# Builds for arm64 on a machine of another kind, with Debian's cross compiler; what is built is run by
# qemu. Libraries are those that come with the cross compiler; what is headers only may be the machine's.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/qemu-aarch64 -L ${CMAKE_FIND_ROOT_PATH})
