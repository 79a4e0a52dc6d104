#pragma once

#include <QObject>

/// Keeps a part of `QGlobal` in the saved file beside the program, `controlConfig.ncl`. Made on the
/// stack for each use, on the GUI thread. Neither way says anything when it fails.
class FileUtils : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Fills `QGlobal` from the file. False, with nothing changed, when there is no file or it
    /// can't be read as far as its 16 control rows; a list of key rows that can't be read stays
    /// empty. Called once, by the making of `QGlobal`: rows are added to what is there.
    bool loadControlConfig();

    /// Writes the file anew; a file that can't be opened is left as it is.
    void saveControlConfig();
};
