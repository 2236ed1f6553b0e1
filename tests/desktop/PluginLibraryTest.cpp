// The plug-in as the desktop program loads it: a shared library opened with dlopen that
// registers its four commands through the host and takes them away again on unload.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include "PluginLoader.h"
#include "RecordingHost.h"
#include "TestPaths.h"
#include "ui/PluginEntry.h"

using namespace testing_support;

namespace {

std::string BuiltPlugin() {
    return (BinaryDir() / "bin" / ui::kPluginFileName).string();
}

}  // namespace

TEST(PluginLibrary, ExportsItsEntriesAndNothingOfItsLayers) {
    void* handle = dlopen(BuiltPlugin().c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    EXPECT_NE(dlsym(handle, ui::kPluginEntryName), nullptr);
    EXPECT_NE(dlsym(handle, ui::kDialogLineEntryName), nullptr);
    // The plug-in's own copy of the host layer stays private: a host of its own kind is
    // never bound to it by accident.
    EXPECT_EQ(dlsym(handle, "_ZN4host7CurrentEv"), nullptr);
    EXPECT_EQ(dlsym(handle, "g_pDlgPlcRendal"), nullptr);
    dlclose(handle);
}

TEST(PluginLibrary, InitialiseRegistersTheFourCommandsAndUnloadRemovesThem) {
    TempDir local;
    ScopedEnv localEnv("ZANDRIX_LOCAL_DIR", local.Path().string());
    ScopedEnv styleEnv("ZANDRIX_INSTALL_STYLE", "0");
    RecordingHost recorder;
    desktop::Plugin plugin;
    std::string error;
    ASSERT_TRUE(plugin.Load(BuiltPlugin(), error)) << error;
    ASSERT_TRUE(plugin.Initialise(recorder));
    EXPECT_EQ(recorder.commands.Names(),
              (std::vector<std::string>{"PlcDataLibEdit", "RENDALFULL", "DIVRENDAL", "PLCRENDAL"}));
    EXPECT_EQ(recorder.commands.Find("plcrendal")->group, "QVPLCRENDAL");
    EXPECT_EQ(recorder.commands.Find("divrendal")->group, "QvPlcRendal");

    // A command run through the registry reaches the plug-in and it talks back through the
    // host it was given: no library here, so the message names the missing file.
    ASSERT_TRUE(recorder.commands.Run("PLCRENDAL"));
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_EQ(recorder.messages[0].caption, "Zandrix 消息");
    EXPECT_NE(recorder.messages[0].text.find(local.Path().string()), std::string::npos);

    plugin.Unload();
    EXPECT_TRUE(recorder.commands.Empty());
    EXPECT_FALSE(plugin.Loaded());
}

TEST(PluginLibrary, ALibraryThatCannotLoadIsNamedWithTheLoadersReason) {
    TempDir dir;
    const std::string fake = (dir / "qvplc_plugin.so").string();
    WriteFile(fake, "not a shared library");
    desktop::Plugin plugin;
    std::string error;
    EXPECT_FALSE(plugin.Load(fake, error));
    EXPECT_EQ(error.rfind("cannot load the plug-in " + fake + ": ", 0), 0u) << error;
    EXPECT_NE(error.find("file too short"), std::string::npos) << error;

    // Nothing found where it is looked for: every place is named.
    EXPECT_FALSE(plugin.LoadFirst({(dir / "a.so").string(), (dir / "b.so").string()}, error));
    EXPECT_NE(error.find((dir / "a.so").string()), std::string::npos) << error;
    EXPECT_NE(error.find((dir / "b.so").string()), std::string::npos) << error;

    // A library without the entry is refused as well.
    EXPECT_FALSE(plugin.Load("libm.so.6", error));
    EXPECT_NE(error.find("has no entry QvPlcRendalEntry"), std::string::npos) << error;
    EXPECT_FALSE(plugin.Loaded());
}

TEST(PluginLibrary, TheEnvironmentNamesTheOnlyLibraryTried) {
    ScopedEnv named("QVPLC_PLUGIN", "/nowhere/p.so");
    EXPECT_EQ(desktop::PluginCandidates("/opt/bin"), std::vector<std::string>{"/nowhere/p.so"});
    ScopedEnv unset("QVPLC_PLUGIN", "");
    const auto candidates = desktop::PluginCandidates("/opt/q/bin");
    ASSERT_GE(candidates.size(), 2u);
    EXPECT_EQ(candidates[0], "/opt/q/bin/qvplc_plugin.so");
    EXPECT_EQ(candidates[1].rfind("/opt/q/lib", 0), 0u) << candidates[1];
    EXPECT_TRUE(candidates[1].ends_with("/qvplc/qvplc_plugin.so")) << candidates[1];
}
