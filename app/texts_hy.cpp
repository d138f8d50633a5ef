// Armenian. Sentences end with the Armenian full stop "։" and the question mark "՞" sits
// on the stressed syllable; labels keep the plain colon as elsewhere in the interface.
#include "app/language_texts.h"

namespace app {

LanguageTexts ArmenianTexts() {
    LanguageTexts t;
    t.wizardBack = "< Հետ";
    t.wizardNext = "Առաջ >";
    t.wizardFinish = "Ավարտել";
    t.wizardCancel = "Չեղարկել";
    t.acceptCancel = "Իսկապե՞ս ցանկանում եք չեղարկել տեղադրումը։";
    t.titleInstaller = "Կազմաձևման տեղադրում";
    t.prepareCopy = "Պատճենման նախապատրաստում...";
    t.installError = "Տեղադրման սխալ";
    t.errorNoSource = "Բաշխման փաթեթի ord8.dkz ֆայլը չի գտնվել։";
    t.errorNoTarget = "Ձևանմուշների տեղադրումն ընթացիկ գրացուցակում չի աջակցվում։";
    t.errorNoSpace = "Temp գրացուցակում բավարար տեղ չկա։";
    t.chooseDirFolder = "&Պանակ:";
    t.chooseDirTitle = "Գրացուցակի ընտրություն";
    t.setupEmptyTarget = "Նշեք ձևանմուշների գրացուցակի ճիշտ ուղին։";
    t.installFinish = "Պատճենումն ավարտված է...";
    t.errorDamagedSource =
        "Բաշխման փաթեթի ord8.dkz ֆայլը վնասված է կամ նախատեսված չէ տեղադրման այս ծրագրի "
        "համար։";
    t.defProduct = "<Արտադրանք>";
    t.defProvider = "<Մատակարար>";
    t.successFinish = "Կազմաձևումը հաջողությամբ տեղադրվեց։";
    t.successOpenDescr = "Բացել փաթեթի նկարագրությունը";
    t.progressStart = "Ֆայլերը պատճենվում են...";
    t.errorFinish =
        "Տեղադրման ընթացքում սխալ է տեղի ունեցել։ Տեղադրումը չեղարկված է։ Ձևանմուշների "
        "գրացուցակը չի փոխվել։";
    t.cancelFinish = "Տեղադրումը չեղարկված է։ Ձևանմուշների գրացուցակը չի փոխվել։";
    t.browseSelDir = "Ընտրված գրացուցակ:";
    t.browseOk = "Ընտրել";
    t.welcomeTitle = "Բարի գալուստ արտադրանքի տեղադրման ծրագիր";
    t.setupExistedTarget =
        "Տեղադրման գրացուցակը պարունակում է ֆայլեր, որոնք կարող են փոխվել տեղադրման "
        "ընթացքում։ Ցանկանո՞ւմ եք շարունակել։";
    t.destinationPrompt =
        "Նշեք ձևանմուշների գրացուցակի ուղին։ Տեղադրման ծրագիրը ձևանմուշները և կազմաձևման "
        "ֆայլերը կտեղադրի նշված գրացուցակում։";
    t.templateCatalog = "Ձևանմուշների գրացուցակ:";
    return t;
}

}  // namespace app
