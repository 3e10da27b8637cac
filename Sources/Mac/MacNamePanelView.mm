#include "Mac/MacNamePanelView.h"

#include "Mac/FileNamePanel.h"
#include "Mac/RaisedExceptions.h"
#include "Mac/Retained.h"
#include "Mac/Strings.h"

#include <utility>

namespace tavel {

namespace {

ScreenRectangle areaOf(NSRect rectangle) {
    return {rectangle.origin.x, rectangle.origin.y, rectangle.size.width, rectangle.size.height};
}

class MacNamePanelView final : public NamePanelView {
public:
    explicit MacNamePanelView(Retained<FileNamePanel> panel) : panel_(std::move(panel)) {}
    ~MacNamePanelView() override;
    MacNamePanelView(const MacNamePanelView&) = delete;
    MacNamePanelView& operator=(const MacNamePanelView&) = delete;

    ScreenSurroundings surroundings() override;
    void setOrigin(ScreenPoint origin) override;
    void show() override;
    bool hasKeyboard() override;
    void demandKeyboard() override;
    std::string enteredText() override;
    void showHint(std::string_view hint) override;
    void hide() override;

private:
    Retained<FileNamePanel> panel_;
};

// Releases the panel inside a pool, which drains what the panel autoreleases.
MacNamePanelView::~MacNamePanelView() {
    ignoringRaised([this] {
        [panel_.get() dismiss];
        panel_ = {};
    });
}

ScreenSurroundings MacNamePanelView::surroundings() {
    return unlessRaised(ScreenSurroundings(), [this] {
        ScreenSurroundings surroundings;
        const NSPoint pointer = [NSEvent mouseLocation];
        surroundings.pointer = {pointer.x, pointer.y};
        for (NSScreen* screen in [NSScreen screens])
            surroundings.screens.push_back({areaOf([screen frame]), areaOf([screen visibleFrame])});
        const NSSize window = [panel_.get() frame].size;
        surroundings.window = {window.width, window.height};
        return surroundings;
    });
}

void MacNamePanelView::setOrigin(ScreenPoint origin) {
    ignoringRaised([&] { [panel_.get() setFrameOrigin:NSMakePoint(origin.x, origin.y)]; });
}

void MacNamePanelView::show() {
    ignoringRaised([this] { [panel_.get() present]; });
}

bool MacNamePanelView::hasKeyboard() {
    return unlessRaised(false, [this] { return [panel_.get() hasKeyboard] != NO; });
}

void MacNamePanelView::demandKeyboard() {
    ignoringRaised([this] { [panel_.get() demandKeyboard]; });
}

void MacNamePanelView::hide() {
    ignoringRaised([this] { [panel_.get() dismiss]; });
}

std::string MacNamePanelView::enteredText() {
    return unlessRaised(std::string(),
                        [this] { return utf8FromString([panel_.get() enteredText]).value_or(""); });
}

void MacNamePanelView::showHint(std::string_view hint) {
    ignoringRaised([&] {
        if (NSString* const text = stringFromUtf8(hint))
            [panel_.get() showHint:text];
    });
}

} // namespace

std::unique_ptr<NamePanelView> makeMacNamePanelView(const NamePanelTexts& texts,
                                                    const NamePanelActions& actions) {
    auto panel = unlessRaised(Retained<FileNamePanel>(), [&] {
        return Retained<FileNamePanel>::adopt([[FileNamePanel alloc] initWithTexts:texts actions:actions]);
    });
    if (!panel)
        return nullptr;
    return std::make_unique<MacNamePanelView>(std::move(panel));
}

} // namespace tavel
