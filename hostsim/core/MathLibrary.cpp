// The math library, opened at the first call of one of its functions. SQLite's SQL math
// functions (sqrt(), pow(), ...) are the host library's only use of it, and the store's own
// statements call none of them: linking it would map it, and resolve its symbols, in every
// process for nothing. Each function here stands in for the math library's, hidden in the host
// library, and finds the real one when it is first called.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace {

void* MathFunction(const char* name) {
    static void* const library = dlopen("libm.so.6", RTLD_NOW | RTLD_LOCAL);
    void* function = library != nullptr ? dlsym(library, name) : nullptr;
    if (function == nullptr) {
        // Without the C library's own math library no answer would be right.
        const char* why = dlerror();
        std::fprintf(stderr, "libkelmctl: no %s in the math library: %s\n", name,
                     why != nullptr ? why : "not found");
        std::abort();
    }
    return function;
}

template <class Function>
Function* RealFunction(const char* name) {
    return reinterpret_cast<Function*>(MathFunction(name));
}

}  // namespace

#define HIDDEN __attribute__((visibility("hidden")))

extern "C" {

#define UNARY(name)                                                    \
    HIDDEN double name(double x) {                                     \
        static auto* const real = RealFunction<double(double)>(#name); \
        return real(x);                                                \
    }
#define BINARY(name)                                                           \
    HIDDEN double name(double x, double y) {                                   \
        static auto* const real = RealFunction<double(double, double)>(#name); \
        return real(x, y);                                                     \
    }

UNARY(acos)
UNARY(acosh)
UNARY(asin)
UNARY(asinh)
UNARY(atan)
UNARY(atanh)
UNARY(cos)
UNARY(cosh)
UNARY(exp)
UNARY(log)
UNARY(sin)
UNARY(sinh)
UNARY(sqrt)
UNARY(tan)
UNARY(tanh)
UNARY(trunc)
BINARY(atan2)
BINARY(fmod)
BINARY(pow)

}  // extern "C"
