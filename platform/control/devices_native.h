// The native machine's devices: what machine.xml declares, what tests attach, and what they were sent.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace machine
{
// --- Amplifiers and codecs: devices that take requests

// When a device completes a request. A deaf one never does and ignores cancelling too.
enum class Completion
{
    AtOnce,
    Late,
    Never,
    Deaf
};

struct DeviceAnswer
{
    DWORD dwError = ERROR_SUCCESS; // at once: the request is refused; late: it fails on completion
    Completion eCompletion = Completion::AtOnce;
    DWORD dwDelay = 0;           // milliseconds of a late completion
    std::vector<BYTE> vecOutput; // as many of them are given as the caller has room for
};

struct DeviceRequest
{
    DWORD dwCode = 0;
    std::vector<BYTE> vecInput;
    DWORD dwOutputSize = 0; // the caller's room in bytes
};

// Answers one request on the thread that sent it. No lock is held.
using DeviceScript = std::function<DeviceAnswer(const DeviceRequest&)>;

struct Device
{
    std::string strName;      // opens as "\\.\NAME"; one with an interface, by its path
    std::string strInterface; // class of its interface, "{F27CDC00-...}"; none if empty
    DWORD dwOpenError = ERROR_SUCCESS;
    DeviceScript fScript; // every request succeeds at once without output if empty
};

// From now on the machine has this device, in place of one of the same name. Interfaces are found in the order in which
// their devices came. Handles that are open stay with the device they opened.
void AttachDevice(Device oDevice);

// Completes what devices and controller hold back for ever, with success. Gives how many requests that were.
size_t CompleteHungRequests();

// --- The embedded controller, behind the method "OemWMIfun"

struct Controller
{
    bool bByteArray = false; // the method takes "u8Input" rather than "u64Input"
    // What steps answer instead of doing their work: CoCreateInstance, ConnectServer, CoSetProxyBlanket, GetObject,
    // GetMethod, SpawnInstance, Put, ExecMethod, Get. A success code leaves the step's pointer null.
    std::map<std::string, HRESULT> mapRefusals;
    Completion eCompletion = Completion::AtOnce; // of the method
    DWORD dwDelay = 0;                           // milliseconds of a late completion
    bool bOutput = true;                         // without it "u8Output" has no array
    // The bytes of "u8Output" for a command word, 256 of a sound controller. Runs on the caller's thread without a
    // lock.
    std::function<std::vector<BYTE>(UINT64)> fScript;
};

void AttachController(Controller oController);
void RemoveController();

// The controller's answer for a temperature in tenths of a degree: success, sign, whole degrees, tenths, zeros.
std::vector<BYTE> TemperatureAnswer(int iTenths);

// What a declared sensor that follows "magnet" shows from now on, in place of its own temperature. Any thread.
void SetFollowed(const std::string& strWhat, double f64Celsius);

// --- What devices and controller were sent

struct SentItem
{
    std::string strDevice;     // its name; "controller"
    std::string strWhat;       // "open", "close", "cancel", "request"; of the controller "u64Input" or "u8Input"
    DWORD dwCode = 0;          // of a request: its code; of "open": the error, or 0
    std::vector<BYTE> vecData; // of a request: its input
    DWORD dwOutputSize = 0;    // of a request: the caller's room
    FILETIME stTime{};         // the machine's clock, UTC
    DWORD dwThread = 0;        // the sender's
};

// In order, all or one device's. The last 100000 are kept. Any thread.
std::vector<SentItem> Sent(const std::string& strDevice = "");
void ForgetSent();

// --- machine.xml

// Forgets every device, declared or attached, and reads the file again. UseFolder does so by itself.
void ReloadDevices();

// What is wrong in the file, one text each: file, line, reason. The element at fault doesn't count, the rest does.
std::vector<std::string> DeviceErrors();
} // namespace machine
