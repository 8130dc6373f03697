// What the library lets a speaker do, by the simulated loudspeaker.
#include "speaker/loudspeaker.h"
#include "tests/protection/library.h"

namespace
{
using P = KelvaneParameter;

struct Trial
{
    const char* pName;
    Signal fnSignal;
    double f64Seconds;
};
struct Outcome
{
    double f64MostMm;
    double f64HottestC;
};

// A default speaker in that ambient on the left channel, the right one silent.
Outcome Play(const KelvaneStruParam& stParam, const SpeakerParams& oSpeaker, double f64ToldC, const Trial& oTrial,
             bool bProtected = true, int iOversampling = 4, const std::function<void(double, CLibrary&)>& fnLook = {})
{
    CLibrary oLibrary(stParam);
    oLibrary.Temperature(static_cast<int>(std::lround(f64ToldC * 100)));
    CLoudspeaker oSimulation;
    EXPECT_TRUE(oSimulation.Init(oSpeaker, SECOND, iOversampling));
    std::vector<Samples> vecFrame(2, Samples(FRAME_LEN));
    for (size_t i = 0; i < static_cast<size_t>(oTrial.f64Seconds * SECOND); i += FRAME_LEN)
    {
        for (size_t j = 0; j < FRAME_LEN; ++j)
            vecFrame[0][j] = static_cast<float>(oTrial.fnSignal(i + j));
        if (bProtected)
            oLibrary.Apply(vecFrame, 0, FRAME_LEN);
        oSimulation.Process(vecFrame[0].data(), FRAME_LEN);
        if (fnLook)
            fnLook(static_cast<double>(i + FRAME_LEN) / SECOND, oLibrary);
    }
    oSimulation.Drain();
    return {oSimulation.PeakDisplacementMm(), oSimulation.HottestCoilC()};
}

SpeakerParams Speaker(double f64AmbientC)
{
    SpeakerParams oSpeaker;
    oSpeaker.f64AmbientC = f64AmbientC;
    return oSpeaker;
}

TEST(SpeakerTest, ConeStaysWithinItsLimit)
{
    const double f64LimitMm = SpeakerLimits().f64DisplacementMm;
    const Trial TRIALS[] = {{"sweep", Sweep(), 4},
                            {"40 Hz", Sine(40), 1.5},
                            {"resonance", Sine(800), 1},
                            {"+6 dB", Sine(300, 2), 1},
                            {"square at resonance", Square(800), 1},
                            {"square", Square(100), 1},
                            {"DC", [](size_t i) { return i > 9000 ? 1.0 : 0.0; }, 1},
                            {"noise", Noise(30), 2},
                            {"burst", Gated(Sine(700), 0.05, 0.11), 2}};
    // The last speaker moves so far that what is above both bands is too much by itself.
    const struct
    {
        double f64AmbientC;
        double f64MmPerV;
        double f64LeastMm; // the library isn't overcautious
    } CASES[] = {{25.01, 0.148, 0.28}, {60.0, 0.148, 0.28}, {25.01, 0.8, 0.15}};
    for (const auto& oCase : CASES)
        for (const Trial& oTrial : TRIALS)
        {
            SpeakerParams oSpeaker = Speaker(oCase.f64AmbientC);
            oSpeaker.f64DisplacementMmPerV = oCase.f64MmPerV;
            const KelvaneStruParam stParam = With(Matched(), {{P::DISPLACEMENT, oCase.f64MmPerV}});
            const double f64Mm = Play(stParam, oSpeaker, oCase.f64AmbientC, oTrial).f64MostMm;
            EXPECT_LE(f64Mm, f64LimitMm * 1.005) << oTrial.pName;
            EXPECT_GE(f64Mm, oCase.f64LeastMm) << oTrial.pName << oCase.f64MmPerV;
            EXPECT_GE(Play(stParam, oSpeaker, oCase.f64AmbientC, oTrial, false).f64MostMm, f64LimitMm * 1.5);
        }
}

TEST(SpeakerTest, UnitsThatDifferStayWithinTheLimitsToo)
{
    const SpeakerParams oTypical = Speaker(40);
    const SpeakerParams UNITS[] = {ScaleStiffness(oTypical, 0.81),
                                   ScaleStiffness(oTypical, 1.21),
                                   ScaleMass(oTypical, 1 / 0.81),
                                   ScaleMass(oTypical, 1 / 1.21),
                                   ScaleResistance(oTypical, 0.95),
                                   ScaleResistance(oTypical, 1.05),
                                   Speaker(30),
                                   Speaker(50)};
    for (const SpeakerParams& oUnit : UNITS)
        for (const Trial& oTrial :
             {Trial{"sweep", Sweep(), 4}, Trial{"square", Square(800), 1}, Trial{"treble", Square(3000), 8}})
        {
            const Outcome oOutcome = Play(DefaultParameters(), oUnit, 40, oTrial);
            EXPECT_LE(oOutcome.f64MostMm, SpeakerLimits().f64DisplacementMm) << oTrial.pName << &oUnit - UNITS;
            EXPECT_LE(oOutcome.f64HottestC, SpeakerLimits().f64CoilC + 1) << oTrial.pName << &oUnit - UNITS;
        }
}

// Never more than 1 K over, and not much under where the signal asks for it. After the first attack the gain moves by
// at most 4 dB a second.
TEST(SpeakerTest, CoilStaysUnderItsLimit)
{
    const KelvaneStruParam stNoCeiling = With(Matched(), {{P::CEILING_STAGE, 0}});
    const struct
    {
        Trial oTrial;
        double f64LeastC; // of the limit
    } CASES[] = {{{"the hottest sine, for ten minutes", Sine(6000), 600}, 2},
                 {{"bass", Sine(100), 60}, 9},
                 {{"square", Square(3000), 20}, 2},
                 {{"white", Noise(1), 20}, 3},
                 {{"2 s on, 3 s off", Gated(Square(3000), 2, 3), 40}, 3},
                 {{"5 s on, 10 s off", Gated(Square(3000), 5, 10), 50}, 3}};
    for (const auto& oCase : CASES)
    {
        double f64Before = 1.0;
        double f64FastestDb = 0.0; // in half a second, quantised by the state's word
        const auto fnLook = [&](double f64Second, CLibrary& oLibrary)
        {
            if (std::fmod(f64Second + 1e-6, 0.5) > 4e-3)
                return;
            const double f64Gain = oLibrary.State(KelvaneState::HEAT_GAIN);
            if (f64Second > 4.0)
                f64FastestDb = std::max(f64FastestDb, std::fabs(20 * std::log10(f64Gain / f64Before)));
            f64Before = f64Gain;
        };
        Trial oTrial = oCase.oTrial;
        oTrial.f64Seconds *= SANITIZED ? 0.1 : 1.0;
        const Outcome oOutcome = Play(stNoCeiling, Speaker(60), 60, oTrial, true, 1, fnLook);
        EXPECT_LE(oOutcome.f64HottestC, SpeakerLimits().f64CoilC + 1) << oCase.oTrial.pName;
        EXPECT_TRUE(SANITIZED || oOutcome.f64HottestC >= SpeakerLimits().f64CoilC - oCase.f64LeastC)
            << oCase.oTrial.pName << oOutcome.f64HottestC;
        EXPECT_LE(f64FastestDb, 2.0 + 0.35) << oCase.oTrial.pName;
    }
}

// The bass goes, what is above it stays: a gain that holds the cone by itself takes 6 dB more of it.
TEST(SpeakerTest, LevelAboveTheBassStays)
{
    const struct
    {
        Trial oTrial;
        double f64Hz; // of what is above the bass
        double f64MostLostDb;
        double f64LeastWonDb;
    } CASES[] = {{{"loud", [](size_t i) { return Sine(55, 0.95)(i) + Sine(1000, 0.2)(i); }, 4}, 1000, 2.0, 6.0},
                 {{"bass alone", [](size_t i) { return Sine(55, 0.8)(i) + Sine(2000, 0.2)(i); }, 4}, 2000, 0.5, 4.0}};
    for (const auto& oCase : CASES)
    {
        const double f64Over = Play(DefaultParameters(), Speaker(25), 25.01, oCase.oTrial, false).f64MostMm /
                               SpeakerLimits().f64DisplacementMm;
        std::vector<Samples> vecSound(1, Make(oCase.oTrial.fnSignal, 4));
        const auto fnLevel = [&]
        {
            double f64Sin = 0.0, f64Cos = 0.0;
            for (size_t i = 3 * SECOND; i < 4 * SECOND; ++i)
            {
                const double f64Angle = 2 * PI * oCase.f64Hz * static_cast<double>(i) / SECOND;
                f64Sin += static_cast<double>(vecSound[0][i]) * std::sin(f64Angle);
                f64Cos += static_cast<double>(vecSound[0][i]) * std::cos(f64Angle);
            }
            return 20 * std::log10(std::hypot(f64Sin, f64Cos));
        };
        const double f64InDb = fnLevel();
        CLibrary oLibrary(DefaultParameters());
        oLibrary.Temperature(2501);
        oLibrary.Play(vecSound);
        const double f64LostDb = f64InDb - fnLevel();
        EXPECT_LE(f64LostDb, oCase.f64MostLostDb) << oCase.oTrial.pName;
        EXPECT_GE(20 * std::log10(f64Over) - f64LostDb, oCase.f64LeastWonDb) << oCase.oTrial.pName << f64LostDb;
    }
}

// Sets from all over the ranges, their ends above all, each on a speaker that is like it.
TEST(SpeakerTest, EverySetProtectsItsSpeaker)
{
    constexpr int SETS = SANITIZED ? 6 : 30;
    std::mt19937 oRandom(9);
    std::uniform_real_distribution<double> oPart(-0.3, 1.3);
    for (int iTaken = 0; iTaken < SETS;)
    {
        KelvaneStruParam stParam = Matched();
        const auto Get = [&](P eParameter) { return GetParameter(stParam, eParameter); };
        for (int i = static_cast<int>(P::COIL_RESISTANCE); i < KELVANE_PARAMETER_COUNT; ++i)
        {
            const KelvaneParameterInfo& oInfo = KELVANE_PARAMETERS[i];
            if (oInfo.f64Lowest > 0)
                stParam = With(stParam,
                               {{oInfo.eParameter, oInfo.f64Lowest * std::pow(oInfo.f64Highest / oInfo.f64Lowest,
                                                                              std::clamp(oPart(oRandom), 0.0, 1.0))}});
        }
        const SpeakerParams oSpeaker = {Get(P::COIL_RESISTANCE),   Get(P::RESISTANCE_RISE), Get(P::RESONANCE),
                                        Get(P::MECHANICAL_Q),      Get(P::ELECTRICAL_Q),    Get(P::DISPLACEMENT),
                                        Get(P::FULL_SCALE),        Get(P::COIL_TO_MAGNET),  Get(P::COIL_HEAT),
                                        Get(P::MAGNET_TO_AMBIENT), Get(P::MAGNET_HEAT),     50.0};
        if (CheckParameters(stParam).pInfo != nullptr || !CLoudspeaker().Init(oSpeaker, SECOND))
            continue;
        const double f64Seconds = std::min(10.0, 2 + 3 * Get(P::COIL_TO_MAGNET) * Get(P::COIL_HEAT));
        const Signal SIGNALS[] = {Noise(19), Square(Get(P::RESONANCE)), Gated(Square(3000), 0.8, 1)};
        const Outcome oOutcome = Play(stParam, oSpeaker, 50, {"", SIGNALS[iTaken % 3], f64Seconds});
        EXPECT_LE(oOutcome.f64MostMm, Get(P::DISPLACEMENT_LIMIT) * 1.005) << iTaken;
        EXPECT_LE(oOutcome.f64HottestC, Get(P::COIL_LIMIT) + 1) << iTaken;
        ++iTaken;
    }
}

// Constant power, small enough for a constant resistance: the two exponentials of coil and magnet.
TEST(SpeakerTest, ModelFollowsTheClosedForm)
{
    const double Rtc = 40, Cc = 0.025, Rtm = 45, Cm = 0.2, f64PowerW = 0.6 * 0.6 / 6;
    CLibrary oLibrary(With(Matched(), {{P::MAGNET_HEAT, Cm}, {P::EXCURSION_STAGE, 0}, {P::RESISTANCE_RISE, 0.001}}));
    oLibrary.Temperature(2501);
    // x' = A x + b of coil and magnet over ambient.
    const double a = -1 / (Rtc * Cc), b = 1 / (Rtc * Cc), c = 1 / (Rtc * Cm), d = -(1 / Rtc + 1 / Rtm) / Cm;
    const double f64Root = std::sqrt((a - d) * (a - d) / 4 + b * c);
    const double l1 = (a + d) / 2 + f64Root, l2 = (a + d) / 2 - f64Root;
    const double f64EndC = f64PowerW * (Rtc + Rtm), f64EndM = f64PowerW * Rtm;
    // Modes (b, l - a); the sum at 0 is minus the end.
    const double k2 = (-f64EndM + f64EndC * (l1 - a) / b) / (l2 - l1), k1 = -f64EndC / b - k2;
    for (int iSecond = 1; iSecond <= 30; ++iSecond)
    {
        std::vector<Samples> vecDc(2, Make([](size_t) { return 0.1; }, 1));
        oLibrary.Play(vecDc);
        const double t = iSecond - LIBRARY_DELAY / static_cast<double>(SECOND);
        const double f64Coil = f64EndC + b * (k1 * std::exp(l1 * t) + k2 * std::exp(l2 * t));
        const double f64Magnet = f64EndM + (l1 - a) * k1 * std::exp(l1 * t) + (l2 - a) * k2 * std::exp(l2 * t);
        EXPECT_NEAR(oLibrary.State(KelvaneState::COIL_TEMPERATURE) - 25, f64Coil, 0.01 * f64EndC) << iSecond;
        EXPECT_NEAR(oLibrary.State(KelvaneState::MAGNET_TEMPERATURE) - 25, f64Magnet, 0.01 * f64EndC) << iSecond;
    }
}

// Temperature, resistance and power are those of the simulation, also where cone and coil share the power.
TEST(SpeakerTest, StateIsTrue)
{
    for (const Signal& fnSignal : {Sine(800, 0.4), Sine(3000, 0.5), Noise(20)})
    {
        CLibrary oLibrary(With(Matched(), {{P::AMBIENT_MARGIN, 0}}));
        oLibrary.Temperature(4000);
        CLoudspeaker oSimulation;
        ASSERT_TRUE(oSimulation.Init(Speaker(40), SECOND));
        std::vector<Samples> vecSound(2, Make(fnSignal, 4));
        oLibrary.Play(vecSound);
        oSimulation.Process(vecSound[0].data(), vecSound[0].size());
        const double f64RiseK = oSimulation.CoilC() - 40;
        EXPECT_GT(f64RiseK, 1.0);
        EXPECT_NEAR(oLibrary.State(KelvaneState::COIL_TEMPERATURE) - 40, f64RiseK, 0.02 * f64RiseK);
        EXPECT_NEAR(oLibrary.State(KelvaneState::COIL_RESISTANCE), oSimulation.ResistanceOhm(), 0.03);
        EXPECT_NEAR(oLibrary.State(KelvaneState::MAGNET_TEMPERATURE), oSimulation.MagnetC(), 0.1);
    }
}

// A coil that was hot before the library knew: sense signals tell, when they are there and it is asked to look.
TEST(SpeakerTest, SensedResistanceCorrectsTheTemperature)
{
    for (const bool bSense : {false, true})
    {
        CLibrary oLibrary(Matched());
        oLibrary.Temperature(2501);
        CLoudspeaker oSimulation;
        ASSERT_TRUE(oSimulation.Init(Speaker(25), SECOND));
        ASSERT_TRUE(oSimulation.Reset(90, 90));
        const Samples vecIn = Make(Noise(17), 4);
        std::vector<double> vecAmpere(FRAME_LEN);
        Samples vecVolt(FRAME_LEN + CLoudspeaker::DELAY), vecCurrent(FRAME_LEN);
        for (size_t i = 0; i < vecIn.size(); i += FRAME_LEN)
        {
            if (i % SECOND == SECOND / 2) // each look is better: the back-EMF depends on the resistance
                oLibrary.Find<KelvaneIvOptimize>("AudioKelvaneIvOptimize")(oLibrary.RunBuf());
            std::vector<Samples> vecFrame(1, Samples(vecIn.begin() + static_cast<ptrdiff_t>(i),
                                                     vecIn.begin() + static_cast<ptrdiff_t>(i + FRAME_LEN)));
            for (float& f32Sample : vecFrame[0])
                f32Sample *= 0.2f;
            oLibrary.m_stData.psVoltageIn[0] = bSense ? vecVolt.data() : nullptr;
            oLibrary.m_stData.psCurrentIn[0] = vecCurrent.data();
            oLibrary.Apply(vecFrame, 0, FRAME_LEN);
            std::copy(vecVolt.end() - CLoudspeaker::DELAY, vecVolt.end(), vecVolt.begin());
            for (size_t j = 0; j < FRAME_LEN; ++j)
                vecVolt[CLoudspeaker::DELAY + j] = vecFrame[0][j] * 6 / 10; // of 10 V
            oSimulation.Process(vecFrame[0].data(), FRAME_LEN, {nullptr, nullptr, vecAmpere.data()});
            std::transform(vecAmpere.begin(), vecAmpere.end(), vecCurrent.begin(),
                           [](double f64Ampere) { return static_cast<float>(f64Ampere / 2); }); // of 2 A
        }
        EXPECT_NEAR(oLibrary.State(KelvaneState::COIL_TEMPERATURE), bSense ? oSimulation.CoilC() : 31, 2.5);
        // What was sensed counts for as long as it is.
        oLibrary.m_stData.psVoltageIn[0] = oLibrary.m_stData.psCurrentIn[0] = nullptr;
        std::vector<Samples> vecSilent(1, Samples(60 * SECOND));
        oLibrary.Play(vecSilent);
        const double f64Cooled = oLibrary.State(KelvaneState::COIL_TEMPERATURE);
        oLibrary.Find<KelvaneIvOptimize>("AudioKelvaneIvOptimize")(oLibrary.RunBuf());
        oLibrary.Apply(vecSilent, 0, FRAME_LEN);
        EXPECT_NEAR(oLibrary.State(KelvaneState::COIL_TEMPERATURE), f64Cooled, 0.5);
    }
}
} // namespace
