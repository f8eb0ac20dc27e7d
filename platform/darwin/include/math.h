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

// The C++ library defines a function for each of these names if the name is a macro. It undefines the macro.
#define isfinite __builtin_isfinite
#define isinf __builtin_isinf
#define isnan __builtin_isnan
#define isnormal __builtin_isnormal
#define signbit __builtin_signbit
#define isgreater __builtin_isgreater
#define isgreaterequal __builtin_isgreaterequal
#define isless __builtin_isless
#define islessequal __builtin_islessequal
#define islessgreater __builtin_islessgreater
#define isunordered __builtin_isunordered
#define fpclassify __builtin_fpclassify // The C++ library passes the classes itself.

typedef float float_t;
typedef double double_t;

// The types of the functions that are declared for double, float and long double.
typedef double __unary(double);
typedef float __unaryf(float);
typedef long double __unaryl(long double);
typedef double __binary(double, double);
typedef float __binaryf(float, float);
typedef long double __binaryl(long double, long double);

__BEGIN_DECLS
__unary acos, acosh, asin, asinh, atan, atanh, cbrt, ceil, cos, cosh, erf, erfc, exp, exp2, expm1, fabs,
    floor, lgamma, log, log10, log1p, log2, logb, nearbyint, rint, round, sin, sinh, sqrt, tan, tanh, tgamma,
    trunc;
__unaryf acosf, acoshf, asinf, asinhf, atanf, atanhf, cbrtf, ceilf, cosf, coshf, erff, erfcf, expf, exp2f,
    expm1f, fabsf, floorf, lgammaf, logf, log10f, log1pf, log2f, logbf, nearbyintf, rintf, roundf, sinf,
    sinhf, sqrtf, tanf, tanhf, tgammaf, truncf;
__unaryl acosl, acoshl, asinl, asinhl, atanl, atanhl, cbrtl, ceill, cosl, coshl, erfl, erfcl, expl, exp2l,
    expm1l, fabsl, floorl, lgammal, logl, log10l, log1pl, log2l, logbl, nearbyintl, rintl, roundl, sinl,
    sinhl, sqrtl, tanl, tanhl, tgammal, truncl;
__binary atan2, copysign, fdim, fmax, fmin, fmod, hypot, nextafter, pow, remainder;
__binaryf atan2f, copysignf, fdimf, fmaxf, fminf, fmodf, hypotf, nextafterf, powf, remainderf;
__binaryl atan2l, copysignl, fdiml, fmaxl, fminl, fmodl, hypotl, nextafterl, powl, remainderl;
int ilogb(double), ilogbf(float), ilogbl(long double);
long lrint(double), lrintf(float), lrintl(long double);
long lround(double), lroundf(float), lroundl(long double);
long long llrint(double), llrintf(float), llrintl(long double);
long long llround(double), llroundf(float), llroundl(long double);
double ldexp(double, int), scalbn(double, int), scalbln(double, long), frexp(double, int*),
    modf(double, double*), remquo(double, double, int*), fma(double, double, double),
    nexttoward(double, long double), nan(const char*);
float ldexpf(float, int), scalbnf(float, int), scalblnf(float, long), frexpf(float, int*),
    modff(float, float*), remquof(float, float, int*), fmaf(float, float, float),
    nexttowardf(float, long double), nanf(const char*);
long double ldexpl(long double, int), scalbnl(long double, int), scalblnl(long double, long),
    frexpl(long double, int*), modfl(long double, long double*), remquol(long double, long double, int*),
    fmal(long double, long double, long double), nexttowardl(long double, long double), nanl(const char*);
__END_DECLS
