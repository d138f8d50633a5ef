// Bulgarian.
#include "app/language_texts.h"

namespace app {

LanguageTexts BulgarianTexts() {
    LanguageTexts t;
    t.wizardBack = "< Назад";
    t.wizardNext = "Напред >";
    t.wizardFinish = "Готово";
    t.wizardCancel = "Отказ";
    t.acceptCancel = "Наистина ли искате да прекратите инсталирането?";
    t.titleInstaller = "Инсталиране на конфигурацията";
    t.prepareCopy = "Подготовка за копиране...";
    t.installError = "Грешка при инсталирането";
    t.errorNoSource = "Файлът на инсталационния пакет ord8.dkz не е намерен.";
    t.errorNoTarget = "Инсталирането на шаблони в текущата директория не се поддържа.";
    t.errorNoSpace = "Няма достатъчно свободно място в директорията Temp.";
    t.chooseDirFolder = "&Папка:";
    t.chooseDirTitle = "Избор на директория";
    t.setupEmptyTarget = "Посочете правилен път до директорията с шаблони.";
    t.installFinish = "Копирането е завършено...";
    t.errorDamagedSource =
        "Файлът на инсталационния пакет ord8.dkz е повреден или не е предназначен за тази "
        "инсталационна програма.";
    t.defProduct = "<Продукт>";
    t.defProvider = "<Доставчик>";
    t.successFinish = "Конфигурацията е инсталирана успешно.";
    t.successOpenDescr = "Отваряне на описанието на пакета";
    t.progressStart = "Копиране на файловете...";
    t.errorFinish =
        "По време на инсталирането възникна грешка. Инсталирането е прекратено. Директорията "
        "с шаблони не е променена.";
    t.cancelFinish = "Инсталирането е отменено. Директорията с шаблони не е променена.";
    t.browseSelDir = "Избрана директория:";
    t.browseOk = "Избери";
    t.welcomeTitle = "Добре дошли в инсталационната програма на продукта";
    t.setupExistedTarget =
        "Директорията за инсталиране съдържа файлове, които може да бъдат променени по време "
        "на инсталирането. Искате ли да продължите?";
    t.destinationPrompt =
        "Посочете пътя до директорията с шаблони. Инсталационната програма ще инсталира "
        "шаблоните и конфигурационните файлове в посочената директория.";
    t.templateCatalog = "Директория с шаблони:";
    return t;
}

}  // namespace app
