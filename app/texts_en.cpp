// English: the default language (id 3), used whenever no other language is chosen.
#include "app/language_texts.h"

namespace app {

LanguageTexts EnglishTexts() {
    LanguageTexts t;
    t.wizardBack = "< Back";
    t.wizardNext = "Next >";
    t.wizardFinish = "Finish";
    t.wizardCancel = "Cancel";
    t.acceptCancel = "Do you really want to cancel installation?";
    t.titleInstaller = "Installing configuration";
    t.prepareCopy = "Preparing to copy...";
    t.installError = "Installation error";
    t.errorNoSource = "Distribution kit file ord8.dkz not found.";
    t.errorNoTarget = "Installation of templates to the current directory is not supported.";
    t.errorNoSpace = "Insufficient space available in the directory Temp.";
    t.chooseDirFolder = "&Folder:";
    t.chooseDirTitle = "Choose Directory";
    t.setupEmptyTarget = "Specify correct path to template directory.";
    t.installFinish = "Copying complete...";
    t.errorDamagedSource =
        "Distribution kit file ord8.dkz corrupted or not designed for this installation "
        "program.";
    t.defProduct = "<Product>";
    t.defProvider = "<Vendor>";
    t.successFinish = "Configuration installed successfully.";
    t.successOpenDescr = "Open description of distribution package";
    t.progressStart = "Files being copied...";
    t.errorFinish =
        "An error occurred during the installation process. Installation canceled. Template "
        "directory has not been changed.";
    t.cancelFinish = "Installation canceled. Template directory has not been changed.";
    t.browseSelDir = "Directory selected:";
    t.browseOk = "Select";
    t.welcomeTitle = "Welcome to the product installation program";
    t.setupExistedTarget =
        "The installation directory contains files that may be changed during the "
        "installation process. Do you want to continue?";
    t.destinationPrompt =
        "Specify path to template directory. The installation program will install templates "
        "and configuration files to the specified directory.";
    t.templateCatalog = "Template directory:";
    return t;
}

}  // namespace app
