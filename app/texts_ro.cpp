// Romanian, with the comma-below letters ș and ț.
#include "app/language_texts.h"

namespace app {

LanguageTexts RomanianTexts() {
    LanguageTexts t;
    t.wizardBack = "< Înapoi";
    t.wizardNext = "Înainte >";
    t.wizardFinish = "Finalizare";
    t.wizardCancel = "Anulare";
    t.acceptCancel = "Sigur doriți să anulați instalarea?";
    t.titleInstaller = "Instalarea configurației";
    t.prepareCopy = "Se pregătește copierea...";
    t.installError = "Eroare de instalare";
    t.errorNoSource = "Fișierul kitului de distribuție ord8.dkz nu a fost găsit.";
    t.errorNoTarget = "Instalarea șabloanelor în directorul curent nu este acceptată.";
    t.errorNoSpace = "Spațiu insuficient în directorul Temp.";
    t.chooseDirFolder = "&Folder:";
    t.chooseDirTitle = "Alegerea directorului";
    t.setupEmptyTarget = "Specificați o cale corectă către directorul de șabloane.";
    t.installFinish = "Copiere finalizată...";
    t.errorDamagedSource =
        "Fișierul kitului de distribuție ord8.dkz este deteriorat sau nu este destinat acestui "
        "program de instalare.";
    t.defProduct = "<Produs>";
    t.defProvider = "<Furnizor>";
    t.successFinish = "Configurația a fost instalată cu succes.";
    t.successOpenDescr = "Deschide descrierea kitului de distribuție";
    t.progressStart = "Se copiază fișierele...";
    t.errorFinish =
        "A apărut o eroare în timpul procesului de instalare. Instalarea a fost anulată. "
        "Directorul de șabloane nu a fost modificat.";
    t.cancelFinish = "Instalarea a fost anulată. Directorul de șabloane nu a fost modificat.";
    t.browseSelDir = "Director selectat:";
    t.browseOk = "Selectare";
    t.welcomeTitle = "Bun venit în programul de instalare a produsului";
    t.setupExistedTarget =
        "Directorul de instalare conține fișiere care pot fi modificate în timpul procesului "
        "de instalare. Doriți să continuați?";
    t.destinationPrompt =
        "Specificați calea către directorul de șabloane. Programul de instalare va instala "
        "șabloanele și fișierele de configurare în directorul specificat.";
    t.templateCatalog = "Director de șabloane:";
    return t;
}

}  // namespace app
