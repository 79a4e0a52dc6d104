#include "shell/videolink.h"

#include "console/flowAnalysis.h"
#include "shell/NacelleBench.h"
#include "video/videoFrom.h"

void openVideoWindow(NacelleBench *window, flowAnalysis *page)
{
    if (window->videoWindow) {
        window->videoWindow->activateWindow();
        return;
    }
    auto *video = new videoFrom;
    window->videoWindow = video;
    video->setOwners(window, page);
    const FrameTexts texts = frameTextsOf(*page);
    video->setFrameTexts(texts.carrier, texts.cameraKk, texts.version);
    video->show();
}

void takeVideoWindowOver(NacelleBench *window, flowAnalysis *page)
{
    if (!window->videoWindow)
        return;
    window->videoWindow->setCommandButtonsEnabled(true);
    window->videoWindow->setOwners(window, page);
}

void disableVideoCommands(NacelleBench *window)
{
    if (window->videoWindow)
        window->videoWindow->setCommandButtonsEnabled(false);
}

FrameTexts frameTextsOf(const flowAnalysis &page)
{
    return {page.carrierBlockText(), page.cameraKkText(), page.versionText()};
}
