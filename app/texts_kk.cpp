// Kazakh (Cyrillic script).
#include "app/language_texts.h"

namespace app {

LanguageTexts KazakhTexts() {
    LanguageTexts t;
    t.wizardBack = "< Артқа";
    t.wizardNext = "Келесі >";
    t.wizardFinish = "Дайын";
    t.wizardCancel = "Бас тарту";
    t.acceptCancel = "Орнатудан шынымен бас тартқыңыз келе ме?";
    t.titleInstaller = "Конфигурацияны орнату";
    t.prepareCopy = "Көшіруге дайындық...";
    t.installError = "Орнату қатесі";
    t.errorNoSource = "Орнату жинағының ord8.dkz файлы табылмады.";
    t.errorNoTarget = "Үлгілерді ағымдағы каталогқа орнатуға қолдау көрсетілмейді.";
    t.errorNoSpace = "Temp каталогында орын жеткіліксіз.";
    t.chooseDirFolder = "&Бума:";
    t.chooseDirTitle = "Каталогты таңдау";
    t.setupEmptyTarget = "Үлгілер каталогына дұрыс жолды көрсетіңіз.";
    t.installFinish = "Көшіру аяқталды...";
    t.errorDamagedSource =
        "Орнату жинағының ord8.dkz файлы зақымдалған немесе осы орнату бағдарламасына "
        "арналмаған.";
    t.defProduct = "<Өнім>";
    t.defProvider = "<Жеткізуші>";
    t.successFinish = "Конфигурация сәтті орнатылды.";
    t.successOpenDescr = "Орнату жинағының сипаттамасын ашу";
    t.progressStart = "Файлдар көшірілуде...";
    t.errorFinish =
        "Орнату барысында қате орын алды. Орнату тоқтатылды. Үлгілер каталогы өзгертілмеді.";
    t.cancelFinish = "Орнатудан бас тартылды. Үлгілер каталогы өзгертілмеді.";
    t.browseSelDir = "Таңдалған каталог:";
    t.browseOk = "Таңдау";
    t.welcomeTitle = "Орнату бағдарламасына қош келдіңіз. Орнатылатын өнім:";
    t.setupExistedTarget =
        "Орнату каталогында орнату барысында өзгертілуі мүмкін файлдар бар. Жалғастырғыңыз "
        "келе ме?";
    t.destinationPrompt =
        "Үлгілер каталогына жолды көрсетіңіз. Орнату бағдарламасы үлгілер мен конфигурация "
        "файлдарын көрсетілген каталогқа орнатады.";
    t.templateCatalog = "Үлгілер каталогы:";
    return t;
}

}  // namespace app
