// Georgian.
#include "app/language_texts.h"

namespace app {

LanguageTexts GeorgianTexts() {
    LanguageTexts t;
    t.wizardBack = "< უკან";
    t.wizardNext = "შემდეგი >";
    t.wizardFinish = "მზადაა";
    t.wizardCancel = "გაუქმება";
    t.acceptCancel = "ნამდვილად გსურთ ინსტალაციის გაუქმება?";
    t.titleInstaller = "კონფიგურაციის ინსტალაცია";
    t.prepareCopy = "კოპირებისთვის მომზადება...";
    t.installError = "ინსტალაციის შეცდომა";
    t.errorNoSource = "სადისტრიბუციო ნაკრების ფაილი ord8.dkz ვერ მოიძებნა.";
    t.errorNoTarget = "შაბლონების ინსტალაცია მიმდინარე დირექტორიაში არ არის მხარდაჭერილი.";
    t.errorNoSpace = "დირექტორიაში Temp არ არის საკმარისი ადგილი.";
    t.chooseDirFolder = "&საქაღალდე:";
    t.chooseDirTitle = "დირექტორიის არჩევა";
    t.setupEmptyTarget = "მიუთითეთ შაბლონების დირექტორიის სწორი გზა.";
    t.installFinish = "კოპირება დასრულდა...";
    t.errorDamagedSource =
        "სადისტრიბუციო ნაკრების ფაილი ord8.dkz დაზიანებულია ან არ არის განკუთვნილი ამ "
        "საინსტალაციო პროგრამისთვის.";
    t.defProduct = "<პროდუქტი>";
    t.defProvider = "<მომწოდებელი>";
    t.successFinish = "კონფიგურაცია წარმატებით დაინსტალირდა.";
    t.successOpenDescr = "სადისტრიბუციო ნაკრების აღწერის გახსნა";
    t.progressStart = "მიმდინარეობს ფაილების კოპირება...";
    t.errorFinish =
        "ინსტალაციის პროცესში მოხდა შეცდომა. ინსტალაცია გაუქმდა. შაბლონების დირექტორია არ "
        "შეცვლილა.";
    t.cancelFinish = "ინსტალაცია გაუქმდა. შაბლონების დირექტორია არ შეცვლილა.";
    t.browseSelDir = "არჩეული დირექტორია:";
    t.browseOk = "არჩევა";
    t.welcomeTitle = "მოგესალმებათ პროდუქტის საინსტალაციო პროგრამა";
    t.setupExistedTarget =
        "საინსტალაციო დირექტორია შეიცავს ფაილებს, რომლებიც შეიძლება შეიცვალოს ინსტალაციის "
        "პროცესში. გსურთ გაგრძელება?";
    t.destinationPrompt =
        "მიუთითეთ შაბლონების დირექტორიის გზა. საინსტალაციო პროგრამა დააინსტალირებს "
        "შაბლონებს და კონფიგურაციის ფაილებს მითითებულ დირექტორიაში.";
    t.templateCatalog = "შაბლონების დირექტორია:";
    return t;
}

}  // namespace app
