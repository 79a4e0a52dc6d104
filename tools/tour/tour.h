#pragma once

#include "tools/tour/operatorhand.h"
#include "tools/tour/podrun.h"
#include "tools/tour/step.h"

#include "shell/NacelleBench.h"

#include <QString>

namespace tour {

/// The real main window beside a simulated pod, and what a step needs to drive and read them. Made
/// on the main thread, after the choice of the language.
class Tour
{
public:
    /// Pictures go into `folder` and have `language` in their names.
    Tour(const PodChoice &pod, const QString &folder, const QString &language);

    /// Prints and runs each step and takes its picture; false when one didn't come true.
    bool run(const QVector<Step> &steps);

    PodRun &pod() { return m_pod; }
    QWidget *window() { return &m_window; }
    /// The widget of that name in the connection panel, in the page in front.
    template <typename T = QWidget>
    T *panel(const char *name)
    {
        return find<T>(panelWidget(), name);
    }
    template <typename T = QWidget>
    T *page(const char *name)
    {
        return find<T>(pageWidget(), name);
    }
    /// The window of that class which is open beside the main one; waits for it.
    QWidget *dialog(const char *className);

    /// The text that a label, a button, a line edit or a text box shows.
    QString pageText(const char *name);
    QString panelText(const char *name);
    /// Waits until it shows that text.
    void awaitPageText(const char *name, const QString &text);
    void awaitPanelText(const char *name, const QString &text);

    /// Waits for a message box and tests its text. It stays open for the picture.
    void expectNotice(const char *key);
    void closeNotice();

    /// Waits until the pod prints `text` once more than it had when `mark` was asked for.
    int podMark(const QString &text) { return m_pod.output().count(text); }
    void awaitPod(const QString &text, int mark);

    /// One more picture of the step that runs: `what` stands after the step's name.
    void takePicture(const char *what, Shown shown);

    /// Entries of the traffic log in one direction ("发" or "收"), oldest first, in hexadecimal.
    QStringList logged(const char *direction);
    void awaitLogged(const char *direction, int count);
    /// Waits until the newest frame that went out has these digits at the place.
    void awaitSent(const QString &claim, int place, const QString &digits);

private:
    QWidget *panelWidget();
    QWidget *pageWidget();
    bool runStep(const Step &step);
    void sayFailure(const char *reason);
    QString label(const QString &name) const;
    QImage picture(Shown shown);
    void savePicture(const QString &name, Shown shown);

    QString m_folder;
    QString m_language;
    int m_number = 0; ///< of the step that runs
    QString m_step;   ///< its name
    PodRun m_pod;
    NacelleBench m_window;
};

} // namespace tour
