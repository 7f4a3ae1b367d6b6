#include "support/ModelFailures.h"

#include <algorithm>

namespace Testing {

bool MakesModel(const std::string& operation) {
    return operation == "NetworkFactory::GetNetworkInfo" ||
           operation == "NetworkInfoImpl::NetworkInfoImpl";
}

const ModelFailure* FindModelFailure(const std::string& path) {
    auto found = std::find_if(kModelFailures.begin(), kModelFailures.end(),
                              [&path](const ModelFailure& line) { return line.command == path; });
    return found == kModelFailures.end() ? nullptr : &*found;
}

}  // namespace Testing
