// Signals to play to the simulated loudspeakers.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

constexpr double PI = 3.14159265358979323846;
constexpr double RATE = 48000.0;

using Samples = std::vector<float>;

// A cosine; a constant at 0 Hz.
inline Samples Tone(double f64Hz, double f64Amplitude, double f64Seconds)
{
    Samples vecTone(static_cast<size_t>(f64Seconds * RATE));
    for (size_t i = 0; i < vecTone.size(); ++i)
        vecTone[i] = static_cast<float>(f64Amplitude * std::cos(2.0 * PI * f64Hz * static_cast<double>(i) / RATE));
    return vecTone;
}
