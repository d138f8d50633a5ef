// Latvian.
#include "app/language_texts.h"

namespace app {

LanguageTexts LatvianTexts() {
    LanguageTexts t;
    t.wizardBack = "< Atpakaļ";
    t.wizardNext = "Tālāk >";
    t.wizardFinish = "Pabeigt";
    t.wizardCancel = "Atcelt";
    t.acceptCancel = "Vai tiešām vēlaties atcelt instalēšanu?";
    t.titleInstaller = "Konfigurācijas instalēšana";
    t.prepareCopy = "Gatavošanās kopēšanai...";
    t.installError = "Instalēšanas kļūda";
    t.errorNoSource = "Piegādes komplekta fails ord8.dkz nav atrasts.";
    t.errorNoTarget = "Veidņu instalēšana pašreizējā direktorijā netiek atbalstīta.";
    t.errorNoSpace = "Direktorijā Temp nav pietiekami daudz vietas.";
    t.chooseDirFolder = "&Mape:";
    t.chooseDirTitle = "Direktorija izvēle";
    t.setupEmptyTarget = "Norādiet pareizu ceļu uz veidņu direktoriju.";
    t.installFinish = "Kopēšana pabeigta...";
    t.errorDamagedSource =
        "Piegādes komplekta fails ord8.dkz ir bojāts vai nav paredzēts šai instalēšanas "
        "programmai.";
    t.defProduct = "<Produkts>";
    t.defProvider = "<Piegādātājs>";
    t.successFinish = "Konfigurācija ir veiksmīgi instalēta.";
    t.successOpenDescr = "Atvērt piegādes komplekta aprakstu";
    t.progressStart = "Notiek failu kopēšana...";
    t.errorFinish =
        "Instalēšanas laikā radās kļūda. Instalēšana ir atcelta. Veidņu direktorijs nav "
        "mainīts.";
    t.cancelFinish = "Instalēšana ir atcelta. Veidņu direktorijs nav mainīts.";
    t.browseSelDir = "Izvēlētais direktorijs:";
    t.browseOk = "Izvēlēties";
    t.welcomeTitle = "Laipni lūdzam produkta instalēšanas programmā";
    t.setupExistedTarget =
        "Instalēšanas direktorijā ir faili, kas instalēšanas laikā var tikt mainīti. Vai "
        "vēlaties turpināt?";
    t.destinationPrompt =
        "Norādiet ceļu uz veidņu direktoriju. Instalēšanas programma instalēs veidnes un "
        "konfigurācijas failus norādītajā direktorijā.";
    t.templateCatalog = "Veidņu direktorijs:";
    return t;
}

}  // namespace app
