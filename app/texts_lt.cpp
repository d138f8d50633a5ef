// Lithuanian.
#include "app/language_texts.h"

namespace app {

LanguageTexts LithuanianTexts() {
    LanguageTexts t;
    t.wizardBack = "< Atgal";
    t.wizardNext = "Toliau >";
    t.wizardFinish = "Baigti";
    t.wizardCancel = "Atšaukti";
    t.acceptCancel = "Ar tikrai norite atšaukti diegimą?";
    t.titleInstaller = "Konfigūracijos diegimas";
    t.prepareCopy = "Ruošiamasi kopijuoti...";
    t.installError = "Diegimo klaida";
    t.errorNoSource = "Platinimo paketo failas ord8.dkz nerastas.";
    t.errorNoTarget = "Šablonų diegimas į esamą katalogą nepalaikomas.";
    t.errorNoSpace = "Kataloge Temp nepakanka vietos.";
    t.chooseDirFolder = "&Aplankas:";
    t.chooseDirTitle = "Katalogo pasirinkimas";
    t.setupEmptyTarget = "Nurodykite teisingą kelią į šablonų katalogą.";
    t.installFinish = "Kopijavimas baigtas...";
    t.errorDamagedSource =
        "Platinimo paketo failas ord8.dkz sugadintas arba neskirtas šiai diegimo programai.";
    t.defProduct = "<Produktas>";
    t.defProvider = "<Tiekėjas>";
    t.successFinish = "Konfigūracija sėkmingai įdiegta.";
    t.successOpenDescr = "Atverti platinimo paketo aprašą";
    t.progressStart = "Kopijuojami failai...";
    t.errorFinish = "Diegimo metu įvyko klaida. Diegimas atšauktas. Šablonų katalogas nepakeistas.";
    t.cancelFinish = "Diegimas atšauktas. Šablonų katalogas nepakeistas.";
    t.browseSelDir = "Pasirinktas katalogas:";
    t.browseOk = "Pasirinkti";
    t.welcomeTitle = "Sveiki atvykę į produkto diegimo programą";
    t.setupExistedTarget =
        "Diegimo kataloge yra failų, kurie diegimo metu gali būti pakeisti. Ar norite tęsti?";
    t.destinationPrompt =
        "Nurodykite kelią į šablonų katalogą. Diegimo programa įdiegs šablonus ir "
        "konfigūracijos failus į nurodytą katalogą.";
    t.templateCatalog = "Šablonų katalogas:";
    return t;
}

}  // namespace app
