// The installer's entry point: start-up choices, the application object, preparation,
// then the wizard under the application's event loop, or at once the installation when
// silent. The exit status is always 0: everything the user must know was shown.
#include <cstdlib>
#include <string>

#include "app/startup_choices.h"
#include "text/utf8.h"
#include "wizard/appkit_window.h"
#include "wizard/installer_dialog.h"

struct AppStartup {
    int argc;
    char** argv;
    std::int32_t languageId;
    stdx::u16string title;
};

namespace {

std::string LocaleIdentifier() {
    const char* identifier = [[[NSLocale currentLocale] localeIdentifier] UTF8String];
    return identifier != nullptr ? identifier : "";
}

// The application object with its delegate, before anything is shown: preparation's
// message boxes need it too.
ExtNSApplicationDelegate* StartApplication(CInstallerDlg& dlg) {
    ExtNSApplicationDelegate* delegate = [[ExtNSApplicationDelegate alloc] init];
    delegate->m_mainDlg = &dlg;
    [NSApplication sharedApplication];
    [NSApp setDelegate:delegate];
    BecomeRegularApplication();
    return delegate;
}

}  // namespace

void RunInstaller(AppStartup& startup) {
    const StartupChoices choices =
        ChooseStartup(startup.argc, startup.argv, LocaleIdentifier(), std::getenv("LANG"));
    startup.languageId = choices.languageId;
    startup.title = ApplyStartupChoices(choices);
    const stdx::mbstring title = stdx::encode_utf8(startup.title.data(), startup.title.size());

    CInstallerDlg dlg(startup.argc, startup.argv, choices.silent, title.c_str(),
                      choices.languageName, choices.useCwd);
    ExtNSApplicationDelegate* delegate = StartApplication(dlg);
    AlertMessages messages(title.c_str());
    if (dlg.Prepare(messages)) {
        AppKitWizardWindow window(dlg);
        dlg.AttachWindow(&window);
        dlg.ShowWelcomePage();
        if (dlg.silent())
            dlg.RunSilent();
        else
            [NSApp run];
        dlg.StopInstallation();
        dlg.AttachWindow(nullptr);
    }
    delegate->m_mainDlg = nullptr;
    [NSApp setDelegate:nil];
    [delegate release];
}

int main(int argc, char** argv) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    AppStartup startup{argc, argv, 0, {}};
    RunInstaller(startup);
    [pool release];
    return 0;
}
