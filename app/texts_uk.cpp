// Ukrainian. The placeholder product name stays the Russian "<Продукт>" by request.
#include "app/language_texts.h"

namespace app {

LanguageTexts UkrainianTexts() {
    LanguageTexts t;
    t.wizardBack = "< Назад";
    t.wizardNext = "Далі >";
    t.wizardFinish = "Готово";
    t.wizardCancel = "Скасувати";
    t.acceptCancel = "Ви справді бажаєте скасувати встановлення?";
    t.titleInstaller = "Встановлення конфігурації";
    t.prepareCopy = "Підготовка до копіювання...";
    t.installError = "Помилка встановлення";
    t.errorNoSource = "Файл комплекту встановлення ord8.dkz не знайдено.";
    t.errorNoTarget = "Встановлення шаблонів у поточний каталог не підтримується.";
    t.errorNoSpace = "Недостатньо місця в каталозі Temp.";
    t.chooseDirFolder = "&Папка:";
    t.chooseDirTitle = "Вибір каталогу";
    t.setupEmptyTarget = "Вкажіть правильний шлях до каталогу шаблонів.";
    t.installFinish = "Копіювання завершено...";
    t.errorDamagedSource =
        "Файл комплекту встановлення ord8.dkz пошкоджено або він не призначений для цієї "
        "програми встановлення.";
    t.defProduct = "<Продукт>";
    t.defProvider = "<Постачальник>";
    t.successFinish = "Конфігурацію успішно встановлено.";
    t.successOpenDescr = "Відкрити опис комплекту встановлення";
    t.progressStart = "Триває копіювання файлів...";
    t.errorFinish =
        "Під час встановлення сталася помилка. Встановлення перервано. Каталог шаблонів не "
        "змінено.";
    t.cancelFinish = "Встановлення скасовано. Каталог шаблонів не змінено.";
    t.browseSelDir = "Вибраний каталог:";
    t.browseOk = "Вибрати";
    t.welcomeTitle = "Ласкаво просимо до програми встановлення продукту";
    t.setupExistedTarget =
        "Каталог встановлення містить файли, які можуть бути змінені під час встановлення. "
        "Продовжити встановлення?";
    t.destinationPrompt =
        "Вкажіть шлях до каталогу шаблонів. Програма встановлення встановить шаблони та файли "
        "конфігурації до вказаного каталогу.";
    t.templateCatalog = "Каталог шаблонів:";
    return t;
}

}  // namespace app
