// Every text of the window's fixed-size controls fits its control, in every language of
// the catalogue. Each control is made as wizard/appkit_window.mm makes it and measured
// by its own cell, so the bezel's padding and the control's font count as on screen.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "app/string_catalogue.h"
#include "wizard/appkit_controls.h"

namespace {

// GNUstep's system font is 12 points where macOS uses 13: a text must fit with a tenth
// to spare. Only the text grows with the font, not the bezel around it.
constexpr double kMargin = 1.1;

NSControl* MakeWizardButton(const Frame& frame) {
    NSButton* button = [[[NSButton alloc] initWithFrame:ToRect(frame)] autorelease];
    StyleWizardButton(button);
    return button;
}

NSControl* MakeCheckBox(const Frame& frame) {
    NSButton* box = [[[NSButton alloc] initWithFrame:ToRect(frame)] autorelease];
    StyleCheckBox(box);
    return box;
}

struct Control {
    const char* name;
    NSControl* control;
    std::vector<const char*> keys;
};

std::vector<Control> SingleLineControls() {
    return {
        {"Back button", MakeWizardButton(layout::kBackButton), {"IDS_WIZARD_BACK"}},
        {"Next button",
         MakeWizardButton(layout::kNextButton),
         {"IDS_WIZARD_NEXT", "IDS_WIZARD_FINISH"}},
        {"Cancel button", MakeWizardButton(layout::kCancelButton), {"IDS_WIZARD_CANCEL"}},
        {"directory label", MakeLabel(layout::kDirectoryLabel, false), {"IDS_TEMPLATE_CATALOG"}},
        {"check box", MakeCheckBox(layout::kOpenDescriptionBox), {"IDS_SUCCESS_OPENDESCR"}},
        {"status line",
         MakeLabel(layout::kStatusLine, false),
         {"IDS_PROGRESS_START", "IDS_INSTALL_FINISH"}},
    };
}

struct Measured {
    std::string where;
    NSString* text;
    double needed;  // margin included
    double available;
};

// Fails with every text that does not fit; prints the tightest few either way.
void Report(std::vector<Measured> all, const char* unit) {
    std::sort(all.begin(), all.end(), [](const Measured& a, const Measured& b) {
        return a.available - a.needed < b.available - b.needed;
    });
    std::string failures;
    for (std::size_t i = 0; i < all.size(); ++i) {
        char line[160];
        std::snprintf(line, sizeof line, "  %-40s needs %5.1f of %5.1f %s: ", all[i].where.c_str(),
                      all[i].needed, all[i].available, unit);
        const std::string text = line + std::string([all[i].text UTF8String]) + "\n";
        if (all[i].needed > all[i].available) failures += text;
        if (i < 5) std::printf("tightest:%s", text.c_str());
    }
    EXPECT_TRUE(failures.empty()) << "too big, with a tenth to spare:\n" << failures;
}

// GNUstep draws a character its font lacks as "?", taking none from another font: the
// window's font (DejaVu Sans on Linux) must have every character of every language.
TEST(TextFit, ControlsHaveAGlyphForEveryCharacter) {
#if defined(__APPLE__)
    GTEST_SKIP() << "AppKit takes a missing character from another font";
#endif
    for (const Control& control : SingleLineControls()) {
        NSFont* font = [control.control font];
        EXPECT_STREQ([[font familyName] UTF8String], "DejaVu Sans") << control.name;
        NSCharacterSet* glyphs = [font coveredCharacterSet];
        for (const auto& [id, language] : CatalogueLanguages())
            for (const char* key : control.keys)
                for (char16_t c : language.texts.at(key))
                    EXPECT_TRUE([glyphs characterIsMember:c])
                        << language.code << ' ' << key << " U+" << std::hex << int{c};
    }
}

TEST(TextFit, EveryTextFitsItsControlInEveryLanguage) {
    std::vector<Measured> all;
    for (const Control& control : SingleLineControls()) {
        NSCell* cell = [control.control cell];
        [cell setTitle:@""];
        const double bare = [cell cellSize].width;
        for (const auto& [id, language] : CatalogueLanguages()) {
            for (const char* key : control.keys) {
                NSString* text = ToNSString(language.texts.at(key));
                [cell setTitle:text];
                const double width = [cell cellSize].width;
                all.push_back({language.code + "  " + control.name + "  " + key, text,
                               bare + (width - bare) * kMargin,
                               [control.control frame].size.width});
            }
        }
    }
    Report(all, "pt wide");
}

// The wrapped page texts: welcome (as the dialog composes it with the default names) and
// the directory prompt, which must end above the directory label.
TEST(TextFit, PageTextsFitThePageInEveryLanguage) {
    NSControl* page = MakeLabel(layout::kPageText, true);
    const NSRect bounds = [page bounds];
    const double aboveLabel = layout::kDirectoryLabel.y - layout::kPageText.y;
    std::vector<Measured> all;
    for (const auto& [id, language] : CatalogueLanguages()) {
        const auto& t = language.texts;
        const stdx::u16string welcome = t.at("IDS_WELCOME_TITLE") + u" " + t.at("IDS_DEFPRODUCT") +
                                        u" (" + t.at("IDS_DEFPROVIDER") + u").";
        const std::pair<const char*, stdx::u16string> texts[] = {
            {"welcome", welcome}, {"IDS_DESTINATION_PROMPT", t.at("IDS_DESTINATION_PROMPT")}};
        for (const auto& [name, text] : texts) {
            [page setStringValue:ToNSString(text)];
            // A bigger font wraps as this one does in a narrower page.
            const NSRect title = [[page cell] titleRectForBounds:bounds];
            const NSRect used = [[[page cell] attributedStringValue]
                boundingRectWithSize:NSMakeSize(title.size.width / kMargin, 1e6)
                             options:NSStringDrawingUsesLineFragmentOrigin];
            const double available =
                name == std::string("welcome") ? title.size.height : aboveLabel;
            all.push_back({language.code + "  page text  " + name, [page stringValue],
                           used.size.height * kMargin, available});
        }
    }
    Report(all, "pt high");
}

}  // namespace

int main(int argc, char** argv) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    // Fonts come through the application's display connection.
    [NSApplication sharedApplication];
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    [pool release];
    return result;
}
