// The rows of the `network` tree's table, as a walk of the registered tree meets them.
#pragma once

#include <string>
#include <vector>

namespace ZanvexCli::NetworkNamespace {

struct TreeTableRow {
    std::string path;  // the names from `network` down, between blanks
    bool command = false;
};

// Every row of the table in its order: each namespace before its entries.
std::vector<TreeTableRow> TreeTable();

}  // namespace ZanvexCli::NetworkNamespace
