// The record hook's buffer and stop key, and the playback hook's pacing.
#include <gtest/gtest.h>

#include <string.h>

#include "desktop/pause.h"
#include "desktop/recordings.h"
#include "base/settings.h"
#include "base/ui.h"
#include "run/runstate.h"
#include "script/step.h"
#include "test_support.h"

namespace {

void NoPause(DWORD) {}

class Recordings : public ::testing::Test {
protected:
    void SetUp() override {
        ResetTestState();
        DesktopSleep = NoPause;
        StopKey = VK_PAUSE;
        PlaybackHook = nullptr;
        HookRunning = 1;
        PlaybackLastTick = 0;
    }
    // A playback buffer of events at the given times.
    void Load(std::initializer_list<uint32_t> times, int speed) {
        HeapFreeBlock(EventBuffer);
        EventBuffer = (RecordedEvent*)HeapAllocZero(256);
        int i = 0;
        for (uint32_t t : times) {
            EventBuffer[i].message = WM_KEYDOWN;
            EventBuffer[i].paramL = 'A';
            EventBuffer[i].time = t;
            i++;
        }
        EventIndex = PlaybackDelay = PlaybackOverrun = 0;
        PlaybackSpeed = speed;
    }
    // A selected recording step and a fresh record buffer, as the palette's
    // button leaves them.
    void StartRecordingInto() {
        ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Recording</action></step></ZantoRunner>"), 1);
        ScriptStore.tab[0].selected = 0;
        HeapFreeBlock(EventBuffer);
        EventBuffer = (RecordedEvent*)HeapAllocZero(5120);
        EventIndex = 0;
    }
    void Record(UINT message, HWND window, UINT paramL = 'K') {
        EVENTMSG e = {};
        e.message = message;
        e.paramL = paramL;
        e.hwnd = window;
        RecordHookProc(HC_ACTION, 0, (LPARAM)&e);
    }
};

TEST_F(Recordings, SkipsWaitTheRecordedGapBySpeed) {
    struct {
        int speed, ratio;
        int32_t overrun;
        int32_t delay;
    } cases[] = {
        {SPEED_NORMAL, 4, 0, 100}, {SPEED_SLOW, 4, 0, 400},   {SPEED_FAST, 4, 0, 50},
        {SPEED_NORMAL, 4, 30, 70}, {SPEED_NORMAL, 4, 500, 0}, {SPEED_NORMAL, 4, -20, 100},
        {SPEED_FAST, 1, 0, 100},  // a ratio of 1 leaves fast at the recorded pace
    };
    for (const auto& c : cases) {
        Load({1000, 1100, 1200}, c.speed);
        SlowRatio = c.ratio;
        PlaybackOverrun = c.overrun;
        PlaybackHookProc(HC_SKIP, 0, 0);
        EXPECT_EQ(EventIndex, 1);
        EXPECT_EQ(PlaybackDelay, c.delay) << c.speed << " " << c.overrun;
        EXPECT_EQ(PlaybackOverrun, 0);
    }
    Load({1000, 900}, SPEED_NORMAL);  // stamped before its predecessor
    PlaybackHookProc(HC_SKIP, 0, 0);
    EXPECT_EQ(PlaybackDelay, 0);
}

TEST_F(Recordings, GetsWaitTenMillisecondsOrMoreAndDeliverShorterGapsAtOnce) {
    Load({1000, 1100}, SPEED_NORMAL);
    EVENTMSG e;
    PlaybackDelay = 200;
    LRESULT wait = PlaybackHookProc(HC_GETNEXT, 0, (LPARAM)&e);
    EXPECT_GE(wait, 150);  // the rest of the gap, from the first look at the clock
    EXPECT_EQ(e.message, 0u);
    PlaybackDelay = 9;
    EXPECT_EQ(PlaybackHookProc(HC_GETNEXT, 0, (LPARAM)&e), 0);
    EXPECT_EQ(e.message, (UINT)WM_KEYDOWN);
    EXPECT_EQ(e.paramL, (UINT)'A');
}

TEST_F(Recordings, TheLastSkipEndsThePlayback) {
    std::string folder = LogIntoNewFolder("log.txt");
    Load({1000, 1001}, SPEED_NORMAL);
    RunThread = (HANDLE)1;  // a run: the end is logged
    PlaybackHookProc(HC_SKIP, 0, 0);
    EXPECT_EQ(HookRunning, 1);
    PlaybackHookProc(HC_SKIP, 0, 0);
    RunThread = nullptr;
    EXPECT_EQ(HookRunning, 0);
    EXPECT_EQ(ReadWholeFile(folder + "\\log.txt"), "Recording playback ended (2 events played)\r\n");
}

TEST_F(Recordings, RecordingKeepsFortyEventsSpareAndTheStopKeyOut) {
    StartRecordingInto();
    for (int i = 0; i < 300; i++) Record(WM_KEYDOWN, nullptr);
    EXPECT_EQ(EventIndex, 300);
    EXPECT_GE(HeapBlockSize(EventBuffer) / sizeof(RecordedEvent), 340u);
    EXPECT_NE(EventBuffer[299].time, 0u);
    Record(WM_KEYDOWN, nullptr, VK_PAUSE);  // drops itself and the event before it
    const Step& s = ScriptStore.tab[0].steps[0];
    EXPECT_STREQ(s.value[0], "299");
    const int slot = atoi(s.value[1]);
    ASSERT_TRUE(RecordingTable.slot[slot]);
    EXPECT_EQ(RecordingTable.slot[slot][298].paramL, (uint32_t)'K');
    EXPECT_EQ(RecordingTable.slot[slot][299].message, 0u);
}

TEST_F(Recordings, TheStopKeyFirstGivesAnEmptyRecording) {
    StartRecordingInto();
    Record(WM_KEYDOWN, nullptr, VK_PAUSE);
    EXPECT_STREQ(ScriptStore.tab[0].steps[0].value[0], "0");
    EXPECT_EQ(ActRecording(0, 0), 1);  // nothing to play
}

TEST_F(Recordings, ClicksOnTheEditorAreNotRecordedButItsMouseMovesAre) {
    HWND frame = CreateWindowExA(0, "STATIC", "ZrEditor", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr,
                                 nullptr, nullptr);
    HWND child = CreateWindowExA(0, "STATIC", "", WS_CHILD, 0, 0, 10, 10, frame, nullptr, nullptr, nullptr);
    MainWindow = frame;
    HeapFreeBlock(EventBuffer);
    EventBuffer = (RecordedEvent*)HeapAllocZero(5120);
    EventIndex = 0;
    Record(WM_LBUTTONDOWN, child);
    Record(WM_KEYDOWN, frame);
    Record(WM_MOUSEMOVE, child);
    Record(WM_LBUTTONDOWN, nullptr);
    EXPECT_EQ(EventIndex, 2);
    EXPECT_EQ(EventBuffer[0].message, (uint32_t)WM_MOUSEMOVE);
    MainWindow = nullptr;
    DestroyWindow(frame);
}

TEST_F(Recordings, APlaybackWhileAHookRunsFails) {
    ASSERT_EQ(ReplaceSteps("<ZantoRunner><step><action>Recording</action><value1>3</value1></step></ZantoRunner>"),
              1);
    PlaybackHook = (HHOOK)(INT_PTR)1;
    EXPECT_EQ(ActRecording(0, 0), 0);
    EXPECT_STREQ(StepFailureText, "Another recording is currently playing");
    PlaybackHook = nullptr;
    HookRunning = 0;
    EXPECT_EQ(ActRecording(0, 0), 0);  // no main window to install the hook
    EXPECT_STREQ(StepFailureText, "Unable to start Windows hook procedure");
}

}  // namespace
