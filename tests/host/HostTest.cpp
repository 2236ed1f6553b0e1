#include <gtest/gtest.h>

#include "RecordingHost.h"
#include "host/Host.h"

using testing_support::RecordingHost;

TEST(Host, ScopedHostInstallsAndRestores) {
    RecordingHost outer;
    host::ScopedHost a(outer);
    {
        RecordingHost inner;
        host::ScopedHost b(inner);
        host::Print("inner");
        EXPECT_EQ(inner.AllPrinted(), "inner");
    }
    host::Print("outer");
    EXPECT_EQ(outer.AllPrinted(), "outer");
}

TEST(Host, UnscriptedQuestionsAreAnsweredCautiously) {
    RecordingHost recorder;
    host::ScopedHost scope(recorder);
    EXPECT_EQ(host::ShowMessage("?", "Zandrix", host::MsgIcon::Question, host::MsgButtons::YesNo),
              host::MsgResult::No);
    EXPECT_EQ(host::ShowMessage("?", "Zandrix", host::MsgIcon::Question,
                                host::MsgButtons::OkCancel),
              host::MsgResult::Cancel);
    recorder.messageAnswers.push_back(host::MsgResult::Yes);
    EXPECT_EQ(host::ShowMessage("?", "Zandrix", host::MsgIcon::Question, host::MsgButtons::YesNo),
              host::MsgResult::Yes);
    ASSERT_EQ(recorder.messages.size(), 3u);
    EXPECT_EQ(recorder.messages[0].caption, "Zandrix");
}

TEST(Host, SentCommandStringsRunRegisteredCommandsAfterTheCallerReturns) {
    RecordingHost recorder;
    int runs = 0;
    recorder.AddCommand("QvPlcRendal", "RENDALFULL", "RENDALFULL", 1, [&] { ++runs; });
    recorder.SendCommandString("(Command)\nRendalFull\n");
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(recorder.RunSentCommands(), 1);
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(recorder.RunSentCommands(), 0);
}
