// The one exception of the host-control layer.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace HostCtl::Lib {

class HostCtlException : public std::exception {
public:
    explicit HostCtlException(std::string message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

}  // namespace HostCtl::Lib
