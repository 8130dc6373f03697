// machine.xml: its elements, and the devices they declare.
#include "machine/machine_xml.h"

#include "devices/controller_firmware.h"
#include "machine/machine_xml_reader.h"
#include "machine/power.h"

#include <combaseapi.h>

namespace
{
constexpr long long LATEST = 3600000; // milliseconds
constexpr long long HIGHEST_CODE = 0xFFFFFFFF;
constexpr double HIGHEST_CELSIUS = 255.9; // what the answer's bytes carry
constexpr long long OUTPUT_BYTES = 256;

// What a driver takes; a code of 0 takes any.
struct CDriver
{
    const char* pInterface;
    DWORD dwCode;
    size_t iInput; // bytes
    size_t iOutput;
};
constexpr CDriver AMPLIFIER = {"", 0x04001C14, 8, 0};
constexpr CDriver OTHER_CODEC = {"", 0, 0, 0};
constexpr CDriver g_aCodecs[] = {{"{F27CDC00-203E-4107-A503-21211537EA43}", 0x0022042E, 1, 1},
                                 {"{54C9343C-2A17-42E8-B4FD-9F9DA27B94D6}", 0x00220864, 4, 4}};
const std::vector<std::string> c_vecCodecKinds = {"everest", "senary"};
const std::vector<std::string> c_vecHangs = {"no", "yes", "deaf"};
const std::vector<std::string> c_vecFollowed = {"magnet"};
const std::vector<std::string> c_vecSteps = {
    "CoCreateInstance", "ConnectServer", "CoSetProxyBlanket", "GetObject", "GetMethod",
    "SpawnInstance",    "Put",           "ExecMethod",        "Get"};

machine::DeviceAnswer AnswerOf(const CDriver& oDriver, const machine::DeviceAnswer& oDeclared,
                               const machine::DeviceRequest& oRequest)
{
    machine::DeviceAnswer oAnswer = oDeclared;
    oAnswer.vecOutput.resize(oDriver.iOutput);
    if (oDriver.dwCode != 0 && oRequest.dwCode != oDriver.dwCode)
        oAnswer = {ERROR_INVALID_FUNCTION, machine::Completion::AtOnce, 0, {}};
    else if (oRequest.vecInput.size() < oDriver.iInput || oRequest.dwOutputSize < oDriver.iOutput)
        oAnswer = {ERROR_INVALID_PARAMETER, machine::Completion::AtOnce, 0, {}};
    return oAnswer;
}

// late, hang: when the device answers.
void ReadCompletion(CElementReader& oReader, machine::Completion& eCompletion, DWORD& dwDelay)
{
    if (const auto iLate = oReader.Whole("late", 0, LATEST))
    {
        eCompletion = machine::Completion::Late;
        dwDelay = static_cast<DWORD>(*iLate);
    }
    const size_t iHang = oReader.Choice("hang", c_vecHangs).value_or(0);
    if (iHang > 0)
        eCompletion = iHang == 1 ? machine::Completion::Never : machine::Completion::Deaf;
}

class CMachineXml
{
public:
    explicit CMachineXml(const std::string& strHostFile) { m_oErrors.strFile = strHostFile; }

    CDeclaredMachine Read()
    {
        tinyxml2::XMLDocument oDocument;
        const tinyxml2::XMLError eError = oDocument.LoadFile(m_oErrors.strFile.c_str());
        if (eError == tinyxml2::XML_ERROR_FILE_NOT_FOUND)
            return {};
        const tinyxml2::XMLElement* const pRoot = oDocument.RootElement();
        if (eError != tinyxml2::XML_SUCCESS)
            m_oErrors.Add(oDocument.ErrorLineNum(), std::string("can't be read: ") + oDocument.ErrorName());
        else if (pRoot == nullptr || std::string(pRoot->Name()) != "machine")
            m_oErrors.Add(pRoot == nullptr ? 0 : pRoot->GetLineNum(), "the root isn't <machine>");
        else
            ReadElements(*pRoot);
        m_oMachine.vecErrors = std::move(m_oErrors.vecErrors);
        return std::move(m_oMachine);
    }

private:
    void ReadElements(const tinyxml2::XMLElement& oRoot)
    {
        for (const auto* p = oRoot.FirstChildElement(); p != nullptr; p = p->NextSiblingElement())
        {
            const std::string strName = p->Name();
            if (strName == "amplifier")
                ReadAmplifier(*p);
            else if (strName == "codec")
                ReadCodec(*p);
            else if (strName == "controller")
                ReadController(*p);
            else if (strName == "power")
                ReadPower(*p);
            else
                m_oErrors.Add(p->GetLineNum(), "<" + strName + "> is no element of a machine");
        }
    }

    void ReadAmplifier(const tinyxml2::XMLElement& oElement)
    {
        CElementReader oReader(oElement, m_oErrors);
        oReader.Require("name");
        AddDevice(oReader, oReader.Text("name").value_or(""), "", AMPLIFIER);
    }

    void ReadCodec(const tinyxml2::XMLElement& oElement)
    {
        CElementReader oReader(oElement, m_oErrors);
        const auto iKind = oReader.Choice("kind", c_vecCodecKinds);
        const auto strInterface = oReader.Text("interface");
        if (oReader.Has("kind") == oReader.Has("interface"))
            oReader.Fail("wants either kind or interface");
        CLSID oIgnored{};
        if (strInterface.has_value() &&
            CLSIDFromString(std::wstring(strInterface->begin(), strInterface->end()).c_str(), &oIgnored) != S_OK)
            oReader.Fail("interface=\"" + *strInterface + "\" is not an id in braces");
        const CDriver& oDriver = iKind.has_value() ? g_aCodecs[*iKind] : OTHER_CODEC;
        const std::string strName =
            (iKind.has_value() ? c_vecCodecKinds[*iKind] : "codec") + std::to_string(m_oMachine.vecDevices.size());
        AddDevice(oReader, oReader.Text("name").value_or(strName), strInterface.value_or(oDriver.pInterface), oDriver);
    }

    // With what every device can be told: to refuse, to fail, to complete late or never.
    void AddDevice(CElementReader& oReader, const std::string& strName, const std::string& strInterface,
                   const CDriver& oDriver)
    {
        machine::Device oDevice;
        oDevice.strName = strName;
        oDevice.strInterface = strInterface;
        oDevice.dwOpenError = static_cast<DWORD>(oReader.Whole("open-error", 1, HIGHEST_CODE).value_or(0));
        machine::DeviceAnswer oAnswer;
        if (const auto iError = oReader.Whole("completion-error", 1, 0xFFFF))
            oAnswer = {static_cast<DWORD>(*iError), machine::Completion::Late, 0, {}};
        ReadCompletion(oReader, oAnswer.eCompletion, oAnswer.dwDelay);
        if (const auto iError = oReader.Whole("request-error", 1, 0xFFFF))
            oAnswer = {static_cast<DWORD>(*iError), machine::Completion::AtOnce, 0, {}};
        oDevice.fScript = [oDriver, oAnswer](const machine::DeviceRequest& oRequest)
        { return AnswerOf(oDriver, oAnswer, oRequest); };
        for (const machine::Device& oOther : m_oMachine.vecDevices)
            if (oOther.strName == strName)
                oReader.Fail("name=\"" + strName + "\" is taken");
        if (oReader.Finish())
            m_oMachine.vecDevices.push_back(std::move(oDevice));
    }

    void ReadController(const tinyxml2::XMLElement& oElement)
    {
        CElementReader oReader(oElement, m_oErrors);
        machine::Controller oController;
        oReader.Require("input");
        oController.bByteArray = oReader.Choice("input", {"u64Input", "u8Input"}).value_or(0) == 1;
        oController.bOutput = oReader.Choice("array", {"no", "yes"}).value_or(1) == 1;
        ReadCompletion(oReader, oController.eCompletion, oController.dwDelay);
        const auto iError = oReader.Whole("error", 0, 255);
        const size_t iBytes = static_cast<size_t>(oReader.Whole("bytes", 0, OUTPUT_BYTES).value_or(OUTPUT_BYTES));
        std::vector<CSensor> vecSensors;
        ReadControllerParts(oElement, oController, vecSensors);
        oController.fScript = [fFirmware = ControllerFirmware(std::move(vecSensors)), iError, iBytes](UINT64 u64Word)
        {
            std::vector<BYTE> vecAnswer = fFirmware(u64Word);
            if (iError.has_value())
                vecAnswer[0] = static_cast<BYTE>(*iError);
            vecAnswer.resize(iBytes);
            return vecAnswer;
        };
        if (m_oMachine.oController.has_value())
            oReader.Fail("is there already");
        if (oReader.Finish())
            m_oMachine.oController = std::move(oController);
    }

    void ReadControllerParts(const tinyxml2::XMLElement& oElement, machine::Controller& oController,
                             std::vector<CSensor>& vecSensors)
    {
        for (const auto* p = oElement.FirstChildElement(); p != nullptr; p = p->NextSiblingElement())
        {
            const std::string strName = p->Name();
            CElementReader oReader(*p, m_oErrors);
            if (strName == "sensor")
            {
                CSensor oSensor = ReadSensor(*p, oReader);
                if (oReader.Finish() && !oSensor.vecCurve.empty())
                    vecSensors.push_back(std::move(oSensor));
            }
            else if (strName == "refuse")
            {
                oReader.Require("step");
                oReader.Require("code");
                const auto iStep = oReader.Choice("step", c_vecSteps);
                const auto iCode = oReader.Whole("code", 0, HIGHEST_CODE);
                if (oReader.Finish())
                    oController.mapRefusals[c_vecSteps[*iStep]] = static_cast<HRESULT>(*iCode);
            }
            else
                oReader.Fail("is no part of a controller");
        }
    }

    // Its temperature, until it's known what it follows, stands still, runs from one to another at so many degrees a
    // second, or goes by points.
    CSensor ReadSensor(const tinyxml2::XMLElement& oElement, CElementReader& oReader)
    {
        CSensor oSensor;
        oReader.Require("id");
        oSensor.iId = static_cast<int>(oReader.Whole("id", 0, 255).value_or(0));
        if (const auto iFollows = oReader.Choice("follows", c_vecFollowed))
            oSensor.strFollows = c_vecFollowed[*iFollows];
        const auto f64Begin = oReader.Number("temperature", -HIGHEST_CELSIUS, HIGHEST_CELSIUS);
        const auto f64Speed = oReader.Number("per-second", 0.0001, 1000);
        const auto f64End = oReader.Number("until", -HIGHEST_CELSIUS, HIGHEST_CELSIUS);
        if (oReader.Has("per-second") != oReader.Has("until"))
            oReader.Fail("wants per-second and until together");
        if (f64Begin.has_value())
            oSensor.vecCurve.push_back({0, *f64Begin});
        if (f64Begin.has_value() && f64Speed.has_value() && f64End.has_value() && *f64End != *f64Begin)
            oSensor.vecCurve.push_back({std::abs(*f64End - *f64Begin) / *f64Speed, *f64End});
        const bool bPoints = oElement.FirstChildElement() != nullptr;
        if (oReader.Has("temperature") == bPoints)
            oReader.Fail("wants either temperature or points");
        for (const auto* p = oElement.FirstChildElement(); p != nullptr; p = p->NextSiblingElement())
            ReadPoint(*p, oReader, oSensor);
        return oSensor;
    }

    void ReadPoint(const tinyxml2::XMLElement& oElement, CElementReader& oSensorReader, CSensor& oSensor)
    {
        CElementReader oReader(oElement, m_oErrors);
        if (std::string(oElement.Name()) != "point")
            oReader.Fail("is no part of a sensor");
        oReader.Require("at");
        oReader.Require("temperature");
        const auto f64At = oReader.Number("at", 0, 1e9);
        const auto f64Celsius = oReader.Number("temperature", -HIGHEST_CELSIUS, HIGHEST_CELSIUS);
        if (f64At.has_value() && !oSensor.vecCurve.empty() && *f64At <= oSensor.vecCurve.back().f64Seconds)
            oReader.Fail("isn't later than the one before");
        if (oReader.Finish())
            oSensor.vecCurve.push_back({*f64At, *f64Celsius});
        else
            oSensorReader.Fail("has a wrong point");
    }

    void ReadPower(const tinyxml2::XMLElement& oElement)
    {
        CElementReader oReader(oElement, m_oErrors);
        oReader.Require("percent");
        oReader.Require("ac");
        const auto iPercent = oReader.Whole("percent", 0, 255);
        const auto iMains = oReader.Whole("ac", 0, 255);
        if (oReader.Finish())
            m_oMachine.oPower = PowerStatusOf(static_cast<BYTE>(*iMains), static_cast<BYTE>(*iPercent));
    }

    CXmlErrors m_oErrors;
    CDeclaredMachine m_oMachine;
};
} // namespace

CDeclaredMachine ReadMachineXml(const std::string& strHostFile)
{
    return CMachineXml(strHostFile).Read();
}
