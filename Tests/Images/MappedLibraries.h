#pragma once

#include <fstream>
#include <string>

namespace tavel {

/// Whether this process has a library in memory whose path contains `name`.
inline bool isMapped(const std::string& name) {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (line.find(name) != std::string::npos)
            return true;
    }
    return false;
}

} // namespace tavel
