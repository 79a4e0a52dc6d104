#pragma once

#include "video/pickframe.h"

class NacelleBench;
class flowAnalysis;

// What ties the video window to the pages. Pages and video window don't know one another.

/// Opens the video window for a console page, or brings the open one to the front.
void openVideoWindow(NacelleBench *window, flowAnalysis *page);

/// A new console page takes an open video window over.
void takeVideoWindowOver(NacelleBench *window, flowAnalysis *page);

/// A packet page takes the commands of an open video window away.
void disableVideoCommands(NacelleBench *window);

/// What the page's fields say at this moment.
FrameTexts frameTextsOf(const flowAnalysis &page);
