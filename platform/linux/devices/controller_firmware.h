// What a declared embedded controller answers: sensors whose temperature follows a curve over the machine's clock.
#pragma once

#include "platform/control/devices_native.h"

struct CSensorPoint
{
    double f64Seconds = 0; // since the machine was read
    double f64Celsius = 0;
};

struct CSensor
{
    int iId = 0;
    std::string strFollows;             // what it follows once that is known; empty: its curve alone
    std::vector<CSensorPoint> vecCurve; // at least one, in order of time; straight between them, level outside
};

// Reads a sensor for the word 0xSS0202, takes a report for 0xHHLL0F02, answers anything else with the error byte 1.
// The curves begin now.
std::function<std::vector<BYTE>(UINT64)> ControllerFirmware(std::vector<CSensor> vecSensors);
