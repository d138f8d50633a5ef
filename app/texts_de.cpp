// German.
#include "app/language_texts.h"

namespace app {

LanguageTexts GermanTexts() {
    LanguageTexts t;
    t.wizardBack = "< Zurück";
    t.wizardNext = "Weiter >";
    t.wizardFinish = "Fertig";
    t.wizardCancel = "Abbrechen";
    t.acceptCancel = "Möchten Sie die Installation wirklich abbrechen?";
    t.titleInstaller = "Installation der Konfiguration";
    t.prepareCopy = "Kopiervorgang wird vorbereitet...";
    t.installError = "Installationsfehler";
    t.errorNoSource = "Die Datei des Distributionspakets ord8.dkz wurde nicht gefunden.";
    t.errorNoTarget =
        "Die Installation von Vorlagen in das aktuelle Verzeichnis wird nicht "
        "unterstützt.";
    t.errorNoSpace = "Im Verzeichnis Temp ist nicht genügend Speicherplatz verfügbar.";
    t.chooseDirFolder = "&Ordner:";
    t.chooseDirTitle = "Verzeichnis auswählen";
    t.setupEmptyTarget = "Geben Sie einen gültigen Pfad zum Vorlagenverzeichnis an.";
    t.installFinish = "Kopiervorgang abgeschlossen...";
    t.errorDamagedSource =
        "Die Datei des Distributionspakets ord8.dkz ist beschädigt oder nicht für dieses "
        "Installationsprogramm bestimmt.";
    t.defProduct = "<Produkt>";
    t.defProvider = "<Anbieter>";
    t.successFinish = "Die Konfiguration wurde erfolgreich installiert.";
    t.successOpenDescr = "Beschreibung des Distributionspakets öffnen";
    t.progressStart = "Dateien werden kopiert...";
    t.errorFinish =
        "Während der Installation ist ein Fehler aufgetreten. Die Installation wurde "
        "abgebrochen. Das Vorlagenverzeichnis wurde nicht geändert.";
    t.cancelFinish =
        "Die Installation wurde abgebrochen. Das Vorlagenverzeichnis wurde nicht geändert.";
    t.browseSelDir = "Ausgewähltes Verzeichnis:";
    t.browseOk = "Auswählen";
    t.welcomeTitle = "Willkommen beim Installationsprogramm des Produkts";
    t.setupExistedTarget =
        "Das Installationsverzeichnis enthält Dateien, die während der Installation geändert "
        "werden können. Möchten Sie fortfahren?";
    t.destinationPrompt =
        "Geben Sie den Pfad zum Vorlagenverzeichnis an. Das Installationsprogramm installiert "
        "Vorlagen und Konfigurationsdateien in das angegebene Verzeichnis.";
    t.templateCatalog = "Vorlagenverzeichnis:";
    return t;
}

}  // namespace app
