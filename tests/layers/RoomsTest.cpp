#include "layers/Command.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace kelo::layers {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// Compiles a file that includes one header, with the include path of a room.
CommandResult compile(std::string room, const std::string& header) {
    std::ranges::replace(room, '/', '_');
    const fs::path list = fs::path(KELO_INCLUDE_FOLDERS) / (room + ".txt");
    EXPECT_TRUE(fs::exists(list)) << "there is no room " << room;
    std::ifstream folders(list);
    std::string command = "printf '#include \"" + header +
                          "\"\\n' | '" KELO_COMPILER "' -std=c++20 -x c++ -fsyntax-only";
    for (std::string folder; std::getline(folders, folder);) {
        if (!folder.empty())
            command += " -I'" + folder + "'";
    }
    return run(command + " -");
}

void expectUnknown(const std::string& room, const std::string& header) {
    const CommandResult result = compile(room, header);
    EXPECT_NE(result.status, 0) << room << " can include " << header;
    EXPECT_THAT(result.output, HasSubstr("No such file or directory")) << header;
}

/// A wall between two rooms: what one of them must not be able to include.
struct Border {
    std::string name;
    std::string room;
    std::vector<std::string> unknown;
};

std::ostream& operator<<(std::ostream& out, const Border& border) {
    return out << border.name;
}

const std::vector<std::string> desktopHeaders = {"gtk/gtk.h",      "glib.h",
                                                 "gtkmm.h",        "webkit/webkit.h",
                                                 "libsoup/soup.h", "linux/gobject/GLibMainLoop.h"};

} // namespace

class SystemRoom : public testing::TestWithParam<std::string> {};

TEST_P(SystemRoom, DoesNotKnowTheDesktop) {
    for (const auto& header : desktopHeaders)
        expectUnknown(GetParam(), header);
    expectUnknown(GetParam(), "authenticator/keys/KeyStore.h");
    expectUnknown(GetParam(), "posix/FileDescriptor.h");
}

TEST_P(SystemRoom, KnowsTheBase) {
    const CommandResult result = compile(GetParam(), "base/Bytes.h");
    EXPECT_EQ(result.status, 0) << result.output;
}

INSTANTIATE_TEST_SUITE_P(Each, SystemRoom,
                         testing::Values("base", "base/async", "platform", "log", "service",
                                         "passkey", "web", "voice", "app"),
                         [](const auto& room) {
                             std::string name = room.param;
                             std::ranges::replace(name, '/', '_');
                             return name;
                         });

class RoomBorder : public testing::TestWithParam<Border> {};

TEST_P(RoomBorder, Holds) {
    for (const auto& header : GetParam().unknown)
        expectUnknown(GetParam().room, header);
}

INSTANTIATE_TEST_SUITE_P(
    Each, RoomBorder,
    testing::Values(
        Border{"BaseKnowsNothing", "base", {"base/async/Task.h", "platform/Alert.h"}},
        Border{"TheSeamKnowsNoSystem", "platform", {"service/JsonReply.h", "log/DebugLog.h"}},
        Border{"TheServiceKnowsNoFlow", "service", {"passkey/PasskeyError.h"}},
        Border{"ThePasskeyFlowsKnowNoView", "passkey", {"web/WebModel.h", "app/KeloApp.h"}},
        Border{"TheWebRoomKnowsNoVoice", "web", {"voice/VoiceController.h", "app/KeloApp.h"}},
        Border{"TheVoiceKnowsNoPasskey",
               "voice",
               {"passkey/PasskeyError.h", "web/WebModel.h", "app/KeloApp.h"}},
        Border{"TheWireTypesAreClosed",
               "authenticator/webauthn",
               {"authenticator/keys/KeyStore.h", "base/async/Task.h", "platform/Authorization.h",
                "glib.h"}},
        Border{"KeysKnowNoStore", "authenticator/keys", {"authenticator/store/CredentialStore.h"}},
        Border{"ConsentIsAPort",
               "authenticator/consent",
               {"authenticator/keys/KeyStore.h", "platform/Authorization.h"}},
        Border{"TheCeremoniesKnowNoToolkit",
               "authenticator",
               {"glib.h", "libsecret/secret.h", "linux/gobject/GObjectPointer.h",
                "authenticator/store/Database.h"}},
        Border{"TheMakingOfKeysIsPrivate",
               "authenticator",
               {"authenticator/keys/P256Key.h", "authenticator/keys/KeyWrapping.h",
                "authenticator/webauthn/CborWriter.h"}},
        Border{"TheDesktopSeesOnlyThePasskeyServices",
               "linux/desktop",
               {"authenticator/AuthenticatorParts.h", "authenticator/keys/KeyStore.h",
                "linux/authorization/LocalAuthenticator.h",
                "linux/authorization/keyring/SecretServiceWrappingKeySource.h",
                "linux/inventory/OwnInventory.h"}},
        Border{"WindowsSeeOnlyWhatTheInventoryShows",
               "linux/gtk/windows",
               {"linux/inventory/OwnInventory.h", "linux/inventory/Doctor.h",
                "authenticator/store/CredentialStore.h"}},
        Border{"TheUpdaterKnowsNoInstallation", "updater", {"updater/install/TreeInstaller.h"}},
        Border{"TheUpdaterKnowsNoToolkit", "updater", {"glib.h", "linux/http/Redirect.h"}},
        Border{"TheUpdatersPortKnowsNoUpdater",
               "updater/driver",
               {"updater/Updater.h", "updater/appcast/Appcast.h"}},
        Border{"PosixKnowsNoToolkit", "posix", {"glib.h", "platform/Alert.h"}},
        Border{"TheUpdatersRoomsHideTheirWorkings",
               "linux/update",
               {"updater/UpdateCheck.h", "updater/notes/NotesBuilder.h",
                "updater/files/InstallFiles.h", "updater/install/TreeInstaller.h"}},
        Border{"TheXmlOfTheFeedIsPrivate",
               "updater",
               {"updater/appcast/XmlDocument.h", "updater/appcast/AppcastReader.h"}},
        Border{"DialogsSeeOnlyThePortOfTheAuthenticator",
               "linux/gtk/dialogs",
               {"authenticator/keys/KeyStore.h", "authenticator/MakeCredential.h",
                "authenticator/store/Database.h"}},
        Border{"UpdateWindowsSeeOnlyThePortOfTheUpdater",
               "linux/gtk/update",
               {"updater/Updater.h", "updater/appcast/XmlDocument.h"}},
        Border{"WindowsKnowNoUpdater",
               "linux/gtk/main",
               {"updater/driver/UserDriver.h", "linux/gtk/dialogs/AlertDialog.h"}},
        Border{"WindowsBesideTheMainOneDoNotKnowIt",
               "linux/gtk/windows",
               {"linux/gtk/main/MainWindow.h", "linux/gtk/dialogs/AlertDialog.h"}},
        Border{"TheKitKnowsNoWindow",
               "linux/gtk/kit",
               {"linux/gtk/main/MainWindow.h", "linux/tray/TrayItem.h"}},
        Border{"TheApplicationKnowsNoDialog",
               "linux/gtk/application",
               {"authenticator/consent/PasskeySheet.h", "updater/driver/UserDriver.h"}},
        Border{"TheEngineKnowsNoWindow", "linux/webkit", {"linux/gtk/main/MainWindow.h"}},
        Border{"HttpKnowsNoEngine", "linux/http", {"webkit/webkit.h", "gtk/gtk.h"}},
        Border{"TheApplicationSeesNoPartOfAWindow",
               "linux/gtk/application",
               {"linux/gtk/main/ContentArea.h", "linux/gtk/main/OverlayPanel.h"}},
        Border{"TheDesktopSeesNoDialog",
               "linux/desktop",
               {"linux/gtk/dialogs/PasskeySheetWindow.h", "linux/gtk/dialogs/AlertDialog.h",
                "linux/gtk/update/UpdateWindow.h", "linux/gtk/application/MenuBarExtras.h"}},
        Border{"MenusKnowNoToolkit", "linux/menu", {"gtk/gtk.h", "linux/tray/TrayItem.h"}},
        Border{
            "TheDesktopSeesNoServiceOfTheSession",
            "linux/desktop",
            {"linux/session/LoginSession.h", "linux/session/X11LockScreen.h", "linux/bus/Calls.h"}},
        Border{"TheBusKnowsNoToolkitAndNobodyWhoUsesIt",
               "linux/bus",
               {"gtk/gtk.h", "giomm/dbusconnection.h", "linux/session/LinuxUserSession.h",
                "linux/input/portal/PortalModifierSource.h"}},
        Border{"TheSessionIsWrittenInPlainGLib", "linux/session", {"giomm.h", "gtkmm.h"}},
        Border{"TheTrayKnowsNoWindow", "linux/tray", {"linux/gtk/kit/ColorScheme.h"}},
        Border{"ASourceOfKeysKnowsNoOther",
               "linux/input/evdev",
               {"linux/input/xkb/XkbModifierMap.h", "linux/input/portal/PortalRequest.h",
                "gtk/gtk.h"}},
        Border{"TheHelperIsFreeOfToolkits",
               "linux/authorization/helper",
               {"glib.h", "linux/gobject/GObjectPointer.h",
                "linux/authorization/verification/PamVerifier.h"}},
        Border{"TheDesktopNeverLooksBackUp",
               "linux/desktop",
               {"app/KeloApp.h", "web/WebModel.h", "passkey/PasskeyError.h",
                "voice/VoiceController.h", "log/DebugLog.h", "service/ServiceEndpoints.h"}}),
    [](const auto& border) { return border.param.name; });

TEST(Rooms, AHeaderThatARoomShowsIsFound) {
    // Guards the tests above against a compiler that finds nothing.
    for (const auto& [room, header] : std::vector<std::pair<std::string, std::string>>{
             {"linux/gtk/dialogs", "authenticator/consent/PasskeySheet.h"},
             {"linux/gtk/update", "updater/driver/UserDriver.h"},
             {"updater", "updater/appcast/Appcast.h"},
             {"linux/desktop", "platform/Desktop.h"},
             {"linux/webkit", "webkit/webkit.h"}}) {
        const CommandResult result = compile(room, header);
        EXPECT_EQ(result.status, 0) << room << ": " << result.output;
    }
}

} // namespace kelo::layers
