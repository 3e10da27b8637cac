"""Small libraries with the names, files and functions of the agent's own, which can be built without a network."""

import pathlib

_FILES = {
    "highway-1.0.3/hwy/highway.h":
        "#pragma once\n#define HWY_ONCE 1\n",
    "simdjson-3.0.1/include/simdjson.h":
        "#pragma once\n#include <cstddef>\nnamespace simdjson { bool validate_utf8(const char*, std::size_t); }\n",
    "simdjson-3.0.1/src/part.h":
        "#pragma once\n",
    "simdjson-3.0.1/src/simdjson.cpp":
        '#include "simdjson.h"\n#include "part.h"\n'
        "bool simdjson::validate_utf8(const char*, std::size_t size) { return size == 2; }\n",
    "utf8proc-2.8.0/utf8proc.h":
        "#pragma once\n#ifndef UTF8PROC_STATIC\n#error This would import the functions of a shared library.\n#endif\n"
        '#ifdef __cplusplus\nextern "C"\n#endif\nint utf8proc_toupper(int);\n',
    "utf8proc-2.8.0/utf8proc.c":
        '#include "utf8proc.h"\nint utf8proc_toupper(int letter) { return letter - 0x20; }\n',
}


def write_stand_ins(folder):
    for name, text in _FILES.items():
        file = pathlib.Path(folder) / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
