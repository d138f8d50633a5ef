// Vietnamese, in precomposed (NFC) letters.
#include "app/language_texts.h"

namespace app {

LanguageTexts VietnameseTexts() {
    LanguageTexts t;
    t.wizardBack = "< Quay lại";
    t.wizardNext = "Tiếp >";
    t.wizardFinish = "Hoàn tất";
    t.wizardCancel = "Hủy";
    t.acceptCancel = "Bạn có thực sự muốn hủy cài đặt không?";
    t.titleInstaller = "Cài đặt cấu hình";
    t.prepareCopy = "Đang chuẩn bị sao chép...";
    t.installError = "Lỗi cài đặt";
    t.errorNoSource = "Không tìm thấy tệp gói phân phối ord8.dkz.";
    t.errorNoTarget = "Không hỗ trợ cài đặt mẫu vào thư mục hiện tại.";
    t.errorNoSpace = "Không đủ dung lượng trống trong thư mục Temp.";
    t.chooseDirFolder = "&Thư mục:";
    t.chooseDirTitle = "Chọn thư mục";
    t.setupEmptyTarget = "Hãy chỉ định đường dẫn đúng tới thư mục mẫu.";
    t.installFinish = "Đã sao chép xong...";
    t.errorDamagedSource =
        "Tệp gói phân phối ord8.dkz bị hỏng hoặc không dành cho chương trình cài đặt này.";
    t.defProduct = "<Sản phẩm>";
    t.defProvider = "<Nhà cung cấp>";
    t.successFinish = "Đã cài đặt cấu hình thành công.";
    t.successOpenDescr = "Mở mô tả gói phân phối";
    t.progressStart = "Đang sao chép tệp...";
    t.errorFinish =
        "Đã xảy ra lỗi trong quá trình cài đặt. Cài đặt đã bị hủy. Thư mục mẫu không bị thay "
        "đổi.";
    t.cancelFinish = "Cài đặt đã bị hủy. Thư mục mẫu không bị thay đổi.";
    t.browseSelDir = "Thư mục đã chọn:";
    t.browseOk = "Chọn";
    t.welcomeTitle = "Chào mừng bạn đến với chương trình cài đặt sản phẩm";
    t.setupExistedTarget =
        "Thư mục cài đặt chứa các tệp có thể bị thay đổi trong quá trình cài đặt. Bạn có muốn "
        "tiếp tục không?";
    t.destinationPrompt =
        "Hãy chỉ định đường dẫn tới thư mục mẫu. Chương trình cài đặt sẽ cài đặt các mẫu và "
        "tệp cấu hình vào thư mục đã chỉ định.";
    t.templateCatalog = "Thư mục mẫu:";
    return t;
}

}  // namespace app
