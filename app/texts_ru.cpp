// Russian: the first language of the product; the other translations follow its terms.
#include "app/language_texts.h"

namespace app {

LanguageTexts RussianTexts() {
    LanguageTexts t;
    t.wizardBack = "< Назад";
    t.wizardNext = "Далее >";
    t.wizardFinish = "Готово";
    t.wizardCancel = "Отмена";
    t.acceptCancel = "Вы действительно хотите отменить установку?";
    t.titleInstaller = "Установка конфигурации";
    t.prepareCopy = "Подготовка к копированию...";
    t.installError = "Ошибка при инсталляции";
    t.errorNoSource = "Файл комплекта установки ord8.dkz не найден.";
    t.errorNoTarget = "Установка в текущий каталог шаблонов не поддерживается.";
    t.errorNoSpace = "Недостаточно места в каталоге Temp.";
    t.chooseDirFolder = "&Папка:";
    t.chooseDirTitle = "Выбор каталога";
    t.setupEmptyTarget = "Укажите корректный путь к каталогу шаблонов.";
    t.installFinish = "Завершение копирования...";
    t.errorDamagedSource =
        "Файл комплекта установки ord8.dkz поврежден или не предназначен для этой программы "
        "установки.";
    t.defProduct = "<Продукт>";
    t.defProvider = "<Поставщик>";
    t.successFinish = "Конфигурация успешно установлена.";
    t.successOpenDescr = "Открыть описание поставки";
    t.progressStart = "Идет копирование файлов...";
    t.errorFinish =
        "В процессе установки произошла ошибка. Установка прервана. Каталог шаблонов не "
        "изменен.";
    t.cancelFinish = "Установка отменена. Каталог шаблонов не изменен.";
    t.browseSelDir = "Выбранный каталог:";
    t.browseOk = "Выбрать";
    t.welcomeTitle = "Добро пожаловать в программу установки продукта";
    t.setupExistedTarget =
        "Каталог установки содержит файлы, которые могут быть изменены в процессе установки. "
        "Продолжить установку?";
    t.destinationPrompt =
        "Укажите путь к каталогу шаблонов. Программа установки установит шаблоны и файлы "
        "конфигурации в указанный каталог.";
    t.templateCatalog = "Каталог шаблонов:";
    return t;
}

}  // namespace app
