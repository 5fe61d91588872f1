# The installed package: headers, import libraries, DLLs, message modules, the tool, and the CMake package ZkTools.
