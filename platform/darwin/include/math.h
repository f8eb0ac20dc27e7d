#pragma once

#include <sys/cdefs.h>

#define HUGE_VAL __builtin_huge_val()
#define HUGE_VALF __builtin_huge_valf()
#define HUGE_VALL __builtin_huge_vall()
#define INFINITY __builtin_inff()
#define NAN __builtin_nanf("")
#define FP_NAN 1
#define FP_INFINITE 2
#define FP_ZERO 3
#define FP_NORMAL 4
#define FP_SUBNORMAL 5
#define FP_ILOGB0 (-2147483647 - 1)
#define FP_ILOGBNAN (-2147483647 - 1)
#define MATH_ERRNO 1
#define MATH_ERREXCEPT 2
#define math_errhandling 2

#define isfinite(x) __builtin_isfinite(x)
#define isinf(x) __builtin_isinf(x)
#define isnan(x) __builtin_isnan(x)
#define isnormal(x) __builtin_isnormal(x)
#define signbit(x) __builtin_signbit(x)
#define fpclassify(x) __builtin_fpclassify(FP_NAN, FP_INFINITE, FP_NORMAL, FP_SUBNORMAL, FP_ZERO, x)
#define isgreater(x, y) __builtin_isgreater(x, y)
#define isgreaterequal(x, y) __builtin_isgreaterequal(x, y)
#define isless(x, y) __builtin_isless(x, y)
#define islessequal(x, y) __builtin_islessequal(x, y)
#define islessgreater(x, y) __builtin_islessgreater(x, y)
#define isunordered(x, y) __builtin_isunordered(x, y)

typedef float float_t;
typedef double double_t;

// Each macro declares a function for double, float and long double.
#define __MATH_1(name)                                                                                       \
    double name(double);                                                                                     \
    float name##f(float);                                                                                    \
    long double name##l(long double);
#define __MATH_2(name)                                                                                       \
    double name(double, double);                                                                             \
    float name##f(float, float);                                                                             \
    long double name##l(long double, long double);
#define __MATH_TO(type, name)                                                                                \
    type name(double);                                                                                       \
    type name##f(float);                                                                                     \
    type name##l(long double);
#define __MATH_WITH(type, name)                                                                              \
    double name(double, type);                                                                               \
    float name##f(float, type);                                                                              \
    long double name##l(long double, type);

__BEGIN_DECLS
__MATH_1(acos)
__MATH_1(acosh)
__MATH_1(asin)
__MATH_1(asinh)
__MATH_1(atan)
__MATH_1(atanh)
__MATH_1(cbrt)
__MATH_1(ceil)
__MATH_1(cos)
__MATH_1(cosh)
__MATH_1(erf)
__MATH_1(erfc)
__MATH_1(exp)
__MATH_1(exp2)
__MATH_1(expm1)
__MATH_1(fabs)
__MATH_1(floor)
__MATH_1(lgamma)
__MATH_1(log)
__MATH_1(log10)
__MATH_1(log1p)
__MATH_1(log2)
__MATH_1(logb)
__MATH_1(nearbyint)
__MATH_1(rint)
__MATH_1(round)
__MATH_1(sin)
__MATH_1(sinh)
__MATH_1(sqrt)
__MATH_1(tan)
__MATH_1(tanh)
__MATH_1(tgamma)
__MATH_1(trunc)
__MATH_2(atan2)
__MATH_2(copysign)
__MATH_2(fdim)
__MATH_2(fmax)
__MATH_2(fmin)
__MATH_2(fmod)
__MATH_2(hypot)
__MATH_2(nextafter)
__MATH_2(pow)
__MATH_2(remainder)
__MATH_TO(int, ilogb)
__MATH_TO(long, lrint)
__MATH_TO(long, lround)
__MATH_TO(long long, llrint)
__MATH_TO(long long, llround)
__MATH_WITH(int, ldexp)
__MATH_WITH(int, scalbn)
__MATH_WITH(long, scalbln)
__MATH_WITH(int*, frexp)
double modf(double, double*);
float modff(float, float*);
long double modfl(long double, long double*);
double fma(double, double, double);
float fmaf(float, float, float);
long double fmal(long double, long double, long double);
double remquo(double, double, int*);
float remquof(float, float, int*);
long double remquol(long double, long double, int*);
double nexttoward(double, long double);
float nexttowardf(float, long double);
long double nexttowardl(long double, long double);
double nan(const char*);
float nanf(const char*);
long double nanl(const char*);
__END_DECLS
