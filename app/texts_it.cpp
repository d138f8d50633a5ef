// Italian.
#include "app/language_texts.h"

namespace app {

LanguageTexts ItalianTexts() {
    LanguageTexts t;
    t.wizardBack = "< Indietro";
    t.wizardNext = "Avanti >";
    t.wizardFinish = "Fine";
    t.wizardCancel = "Annulla";
    t.acceptCancel = "Si desidera davvero annullare l'installazione?";
    t.titleInstaller = "Installazione della configurazione";
    t.prepareCopy = "Preparazione della copia...";
    t.installError = "Errore di installazione";
    t.errorNoSource = "File del pacchetto di distribuzione ord8.dkz non trovato.";
    t.errorNoTarget = "L'installazione dei modelli nella directory corrente non è supportata.";
    t.errorNoSpace = "Spazio insufficiente nella directory Temp.";
    t.chooseDirFolder = "&Cartella:";
    t.chooseDirTitle = "Scelta della directory";
    t.setupEmptyTarget = "Specificare un percorso corretto della directory dei modelli.";
    t.installFinish = "Copia completata...";
    t.errorDamagedSource =
        "Il file del pacchetto di distribuzione ord8.dkz è danneggiato o non è destinato a "
        "questo programma di installazione.";
    t.defProduct = "<Prodotto>";
    t.defProvider = "<Fornitore>";
    t.successFinish = "Configurazione installata correttamente.";
    t.successOpenDescr = "Apri la descrizione del pacchetto";
    t.progressStart = "Copia dei file in corso...";
    t.errorFinish =
        "Si è verificato un errore durante il processo di installazione. Installazione "
        "annullata. La directory dei modelli non è stata modificata.";
    t.cancelFinish = "Installazione annullata. La directory dei modelli non è stata modificata.";
    t.browseSelDir = "Directory selezionata:";
    t.browseOk = "Seleziona";
    t.welcomeTitle = "Benvenuti nel programma di installazione del prodotto";
    t.setupExistedTarget =
        "La directory di installazione contiene file che potrebbero essere modificati durante "
        "il processo di installazione. Si desidera continuare?";
    t.destinationPrompt =
        "Specificare il percorso della directory dei modelli. Il programma di installazione "
        "installerà i modelli e i file di configurazione nella directory specificata.";
    t.templateCatalog = "Directory dei modelli:";
    return t;
}

}  // namespace app
