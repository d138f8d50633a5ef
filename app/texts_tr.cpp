// Turkish.
#include "app/language_texts.h"

namespace app {

LanguageTexts TurkishTexts() {
    LanguageTexts t;
    t.wizardBack = "< Geri";
    t.wizardNext = "İleri >";
    t.wizardFinish = "Bitir";
    t.wizardCancel = "İptal";
    t.acceptCancel = "Kurulumu gerçekten iptal etmek istiyor musunuz?";
    t.titleInstaller = "Yapılandırma kurulumu";
    t.prepareCopy = "Kopyalamaya hazırlanıyor...";
    t.installError = "Kurulum hatası";
    t.errorNoSource = "Dağıtım paketi dosyası ord8.dkz bulunamadı.";
    t.errorNoTarget = "Şablonların geçerli dizine kurulması desteklenmiyor.";
    t.errorNoSpace = "Temp dizininde yeterli boş alan yok.";
    t.chooseDirFolder = "&Klasör:";
    t.chooseDirTitle = "Dizin seçimi";
    t.setupEmptyTarget = "Şablon dizininin doğru yolunu belirtin.";
    t.installFinish = "Kopyalama tamamlandı...";
    t.errorDamagedSource =
        "Dağıtım paketi dosyası ord8.dkz bozuk veya bu kurulum programı için tasarlanmamış.";
    t.defProduct = "<Ürün>";
    t.defProvider = "<Sağlayıcı>";
    t.successFinish = "Yapılandırma başarıyla kuruldu.";
    t.successOpenDescr = "Dağıtım paketinin açıklamasını aç";
    t.progressStart = "Dosyalar kopyalanıyor...";
    t.errorFinish =
        "Kurulum sırasında bir hata oluştu. Kurulum iptal edildi. Şablon dizini "
        "değiştirilmedi.";
    t.cancelFinish = "Kurulum iptal edildi. Şablon dizini değiştirilmedi.";
    t.browseSelDir = "Seçilen dizin:";
    t.browseOk = "Seç";
    t.welcomeTitle = "Kurulum programına hoş geldiniz. Kurulacak ürün:";
    t.setupExistedTarget =
        "Kurulum dizini, kurulum sırasında değiştirilebilecek dosyalar içeriyor. Devam etmek "
        "istiyor musunuz?";
    t.destinationPrompt =
        "Şablon dizininin yolunu belirtin. Kurulum programı, şablonları ve yapılandırma "
        "dosyalarını belirtilen dizine kuracak.";
    t.templateCatalog = "Şablon dizini:";
    return t;
}

}  // namespace app
