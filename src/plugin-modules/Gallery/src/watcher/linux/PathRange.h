// The entries below a folder in a map ordered by path.
#pragma once

#include <string>
#include <utility>

namespace watcher {

inline bool IsBeneath(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path[folder.size()] == '/' &&
           path.compare(0, folder.size(), folder) == 0;
}

// The elements below `folder`, without the folder itself. '0' is the character after '/'.
template <typename Map>
auto Beneath(Map& map, const std::string& folder) {
    return std::make_pair(map.lower_bound(folder + '/'), map.lower_bound(folder + '0'));
}

template <typename Map>
void EraseWithBeneath(Map& map, const std::string& folder) {
    map.erase(folder);
    const auto [first, last] = Beneath(map, folder);
    map.erase(first, last);
}

}  // namespace watcher
