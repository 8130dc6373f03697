// Exponential, logarithm, sine and cosine from additions, multiplications and divisions alone: the C runtimes of the
// two builds differ in last bits, and coefficients made here don't.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

// For |x| up to 700; relative error under 1e-15.
inline double OwnExp(double f64X)
{
    const double f64Turns = std::floor(f64X * 1.4426950408889634 + 0.5);
    const double f64Rest = (f64X - f64Turns * 0.69314718036912382) - f64Turns * 1.9082149292705877e-10; // log 2, in two
    double f64Sum = 1.0;
    for (int i = 14; i > 0; --i)
        f64Sum = 1.0 + f64Sum * f64Rest / i;
    const int64_t i64Power = (static_cast<int64_t>(f64Turns) + 1023) << 52;
    double f64Power;
    memcpy(&f64Power, &i64Power, sizeof(f64Power));
    return f64Sum * f64Power;
}

// Natural, for normal numbers above 0: log m = 2 artanh((m - 1)/(m + 1)) of the mantissa.
inline double OwnLog(double f64X)
{
    int64_t i64Bits;
    memcpy(&i64Bits, &f64X, sizeof(i64Bits));
    int64_t i64Exponent = (i64Bits >> 52) - 1023;
    i64Bits = (i64Bits & 0xFFFFFFFFFFFFF) | (int64_t{1023} << 52);
    double f64Mantissa;
    memcpy(&f64Mantissa, &i64Bits, sizeof(f64Mantissa));
    if (f64Mantissa > 1.4142135623730951)
    {
        f64Mantissa *= 0.5;
        ++i64Exponent;
    }
    const double f64T = (f64Mantissa - 1.0) / (f64Mantissa + 1.0);
    double f64Sum = 0.0;
    for (int i = 23; i > 0; i -= 2)
        f64Sum = f64Sum * (f64T * f64T) + 1.0 / i;
    return 2.0 * f64T * f64Sum + static_cast<double>(i64Exponent) * 0.69314718055994531;
}

// For |x| up to 1.
inline double OwnCos(double f64X)
{
    double f64Sum = 1.0;
    for (int i = 18; i > 0; i -= 2)
        f64Sum = 1.0 - f64Sum * f64X * f64X / (i * (i - 1));
    return f64Sum;
}

inline double OwnSin(double f64X)
{
    double f64Sum = 1.0;
    for (int i = 19; i > 1; i -= 2)
        f64Sum = 1.0 - f64Sum * f64X * f64X / (i * (i - 1));
    return f64Sum * f64X;
}

inline double OwnCosh(double f64X)
{
    return 0.5 * (OwnExp(f64X) + OwnExp(-f64X));
}

// Amplitude for a level.
inline double FromDecibel(double f64Decibel)
{
    return OwnExp(f64Decibel * 0.11512925464970229);
}

// Level of a power ratio.
inline double PowerToDecibel(double f64Ratio)
{
    return 4.3429448190325175 * OwnLog(f64Ratio);
}
