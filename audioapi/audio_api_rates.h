// The sample rates at which a stream is processed; at any other it is bypassed.
#pragma once

inline constexpr int AUDIO_SUPPORTED_RATES[] = {16000, 22050, 32000, 44100, 48000, 96000}; // Hz
