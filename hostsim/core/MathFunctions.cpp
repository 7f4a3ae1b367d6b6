// The math functions SQLite's SQL functions call (sin(), pow(), ...), defined here so that they
// load the math library on their first call instead of with this library. The store never calls
// them, so an autocli process never maps the math library: that saves each process a mapping,
// its relocations and its page faults. Hidden: they serve this library's SQLite alone.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace {

// The math library's own definition of a function, found on first use.
void* MathFunction(const char* name) {
    static void* const library = dlopen("libm.so.6", RTLD_NOW | RTLD_LOCAL);
    void* function = library ? dlsym(library, name) : nullptr;
    if (!function) {
        std::fprintf(stderr, "the math library has no %s: %s\n", name, dlerror());
        std::abort();
    }
    return function;
}

}  // namespace

#define MATH_FUNCTION(name, parameters, arguments)                                     \
    extern "C" __attribute__((visibility("hidden"))) double name parameters noexcept { \
        using Function = double(*) parameters;                                         \
        static const auto function = reinterpret_cast<Function>(MathFunction(#name));  \
        return function arguments;                                                     \
    }
#define UNARY_MATH_FUNCTION(name) MATH_FUNCTION(name, (double x), (x))
#define BINARY_MATH_FUNCTION(name) MATH_FUNCTION(name, (double x, double y), (x, y))

UNARY_MATH_FUNCTION(acos)
UNARY_MATH_FUNCTION(acosh)
UNARY_MATH_FUNCTION(asin)
UNARY_MATH_FUNCTION(asinh)
UNARY_MATH_FUNCTION(atan)
UNARY_MATH_FUNCTION(atanh)
UNARY_MATH_FUNCTION(cos)
UNARY_MATH_FUNCTION(cosh)
UNARY_MATH_FUNCTION(exp)
UNARY_MATH_FUNCTION(log)
UNARY_MATH_FUNCTION(sin)
UNARY_MATH_FUNCTION(sinh)
UNARY_MATH_FUNCTION(sqrt)
UNARY_MATH_FUNCTION(tan)
UNARY_MATH_FUNCTION(tanh)
UNARY_MATH_FUNCTION(trunc)
BINARY_MATH_FUNCTION(atan2)
BINARY_MATH_FUNCTION(fmod)
BINARY_MATH_FUNCTION(pow)
