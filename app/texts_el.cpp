// Greek. The question mark is the Greek one, written as ';' (U+003B), its canonical form.
#include "app/language_texts.h"

namespace app {

LanguageTexts GreekTexts() {
    LanguageTexts t;
    t.wizardBack = "< Πίσω";
    t.wizardNext = "Επόμενο >";
    t.wizardFinish = "Τέλος";
    t.wizardCancel = "Άκυρο";
    t.acceptCancel = "Θέλετε πραγματικά να ακυρώσετε την εγκατάσταση;";
    t.titleInstaller = "Εγκατάσταση διαμόρφωσης";
    t.prepareCopy = "Προετοιμασία αντιγραφής...";
    t.installError = "Σφάλμα εγκατάστασης";
    t.errorNoSource = "Το αρχείο του πακέτου διανομής ord8.dkz δεν βρέθηκε.";
    t.errorNoTarget = "Η εγκατάσταση προτύπων στον τρέχοντα κατάλογο δεν υποστηρίζεται.";
    t.errorNoSpace = "Ανεπαρκής διαθέσιμος χώρος στον κατάλογο Temp.";
    t.chooseDirFolder = "&Φάκελος:";
    t.chooseDirTitle = "Επιλογή καταλόγου";
    t.setupEmptyTarget = "Καθορίστε μια σωστή διαδρομή προς τον κατάλογο προτύπων.";
    t.installFinish = "Η αντιγραφή ολοκληρώθηκε...";
    t.errorDamagedSource =
        "Το αρχείο του πακέτου διανομής ord8.dkz είναι κατεστραμμένο ή δεν προορίζεται για αυτό "
        "το πρόγραμμα εγκατάστασης.";
    t.defProduct = "<Προϊόν>";
    t.defProvider = "<Προμηθευτής>";
    t.successFinish = "Η διαμόρφωση εγκαταστάθηκε με επιτυχία.";
    t.successOpenDescr = "Άνοιγμα περιγραφής του πακέτου διανομής";
    t.progressStart = "Αντιγραφή αρχείων σε εξέλιξη...";
    t.errorFinish =
        "Παρουσιάστηκε σφάλμα κατά τη διαδικασία εγκατάστασης. Η εγκατάσταση ακυρώθηκε. Ο "
        "κατάλογος προτύπων δεν άλλαξε.";
    t.cancelFinish = "Η εγκατάσταση ακυρώθηκε. Ο κατάλογος προτύπων δεν άλλαξε.";
    t.browseSelDir = "Επιλεγμένος κατάλογος:";
    t.browseOk = "Επιλογή";
    t.welcomeTitle = "Καλώς ορίσατε στο πρόγραμμα εγκατάστασης του προϊόντος";
    t.setupExistedTarget =
        "Ο κατάλογος εγκατάστασης περιέχει αρχεία που ενδέχεται να αλλάξουν κατά τη διαδικασία "
        "εγκατάστασης. Θέλετε να συνεχίσετε;";
    t.destinationPrompt =
        "Καθορίστε τη διαδρομή προς τον κατάλογο προτύπων. Το πρόγραμμα εγκατάστασης θα "
        "εγκαταστήσει τα πρότυπα και τα αρχεία διαμόρφωσης στον καθορισμένο κατάλογο.";
    t.templateCatalog = "Κατάλογος προτύπων:";
    return t;
}

}  // namespace app
