// wizard: where every control of the installer window sits, in the coordinates of the
// window's flipped content view (origin top left, y downwards), and the one geometric
// question the progress loop asks. Shared by the window, the cancel test and the test
// that checks every text fits its control.
//
// Threads: any; constants and a pure function.
#pragma once

struct Frame {
    double x, y, width, height;
};

namespace layout {

constexpr double kWindowWidth = 500;
constexpr double kWindowHeight = 360;

constexpr Frame kSeparator{10, 310, kWindowWidth - 20, 5};
// 100 points wide: "Siguiente >", "Abbrechen" or "Скасувати" need more than 80 in a
// rounded button at the window's font, and no shorter word would be natural there.
constexpr Frame kBackButton{170, 320, 100, 30};
constexpr Frame kNextButton{270, 320, 100, 30};
constexpr Frame kCancelButton{390, 320, 100, 30};

constexpr Frame kSideImage{0, 0, 158, 286};
constexpr Frame kPageText{170, 10, 318, 286};  // message and prompt
constexpr Frame kDirectoryLabel{170, 255, 320, 20};
constexpr Frame kPathField{170, 275, 280, 30};
constexpr Frame kBrowseButton{460, 275, 30, 30};
constexpr Frame kOpenDescriptionBox{170, 170, 318, 20};
constexpr Frame kStatusLine{10, 130, kWindowWidth - 20, 20};
constexpr Frame kProgressBar{10, 150, kWindowWidth - 20, 20};

// Edges included, as a point on the button's border is on the button.
constexpr bool Contains(const Frame& frame, double x, double y) {
    return x >= frame.x && x <= frame.x + frame.width && y >= frame.y &&
           y <= frame.y + frame.height;
}

}  // namespace layout
