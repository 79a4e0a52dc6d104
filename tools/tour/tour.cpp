#include "tools/tour/tour.h"

#include "foundation/PopFrame.h"
#include "foundation/QGlobal.h"
#include "shell/connectDevice.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTest>

#include <cstdio>

namespace tour {

namespace {

constexpr int kStillMs = 1500;
constexpr int kStillStepMs = 60;

void say(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fputs("\n", stdout);
    std::fflush(stdout);
}

QImage screenPicture()
{
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage();
}

/// The screen as soon as it stands still. Where it never does, as it is after a while.
QImage stillPicture()
{
    QElapsedTimer patience;
    patience.start();
    QImage last;
    QImage now = screenPicture();
    while (now != last && patience.elapsed() < kStillMs) {
        last = now;
        QTest::qWait(kStillStepMs);
        now = screenPicture();
    }
    return now;
}

QString shownText(const QWidget *widget)
{
    for (const char *property : {"text", "plainText", "currentText"}) {
        const QVariant text = widget->property(property);
        if (text.isValid())
            return text.toString();
    }
    throw TourFailure(widget->objectName() + QStringLiteral(" shows no text"));
}

} // namespace

Tour::Tour(const PodChoice &pod, const QString &folder, const QString &language)
    : m_folder(folder), m_language(language), m_pod(pod)
{
    QDir pictures(folder);
    if (!pictures.mkpath(QStringLiteral(".")))
        throw TourFailure(QStringLiteral("cannot make the folder ") + folder);
    for (const QString &old :
         pictures.entryList({QStringLiteral("[0-9][0-9]-*-%1.png").arg(language),
                             QStringLiteral("failed-%1.png").arg(language)}))
        pictures.remove(old);
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
    fillScreen(&m_window);
}

bool Tour::run(const QVector<Step> &steps)
{
    for (const Step &step : steps)
        if (!runStep(step))
            return false;
    say(QStringLiteral("%1: all %2 steps came true").arg(m_language).arg(steps.size()));
    return true;
}

QString Tour::label(const QString &name) const
{
    return QStringLiteral("%1-%2-%3").arg(m_number, 2, 10, QLatin1Char('0')).arg(name, m_language);
}

bool Tour::runStep(const Step &step)
{
    ++m_number;
    m_step = QLatin1String(step.name);
    const bool isChinese = m_language == QLatin1String("zh");
    say(label(m_step) + QStringLiteral(": ") +
        QString::fromUtf8(isChinese ? step.chinese : step.english));
    try {
        step.run(*this);
        savePicture(m_step, step.shown);
        return true;
    } catch (const TourFailure &failure) {
        sayFailure(failure.what());
        return false;
    }
}

void Tour::sayFailure(const char *reason)
{
    const QString failed = QStringLiteral("failed-") + m_language;
    say(QStringLiteral("FAILED at %1: %2").arg(label(m_step), QString::fromUtf8(reason)));
    say(QStringLiteral("The pod's last words: ") + m_pod.output().right(400).trimmed());
    if (screenPicture().save(QDir(m_folder).filePath(failed + QStringLiteral(".png"))))
        say(QStringLiteral("The screen at that moment: %1.png").arg(failed));
}

/// Of a window by itself nothing that lies over it is seen.
QImage Tour::picture(Shown shown)
{
    if (shown == Shown::Screen)
        return stillPicture();
    return (shown == Shown::MainWindow ? &m_window : dialog("videoFrom"))->grab().toImage();
}

void Tour::savePicture(const QString &name, Shown shown)
{
    const QString path = QDir(m_folder).filePath(label(name) + QStringLiteral(".png"));
    rest(&m_window);
    const QImage taken = picture(shown);
    if (taken.isNull() || !taken.save(path))
        throw TourFailure(QStringLiteral("cannot take the picture ") + path);
}

void Tour::takePicture(const char *what, Shown shown)
{
    savePicture(m_step + QLatin1Char('-') + QLatin1String(what), shown);
}

QWidget *Tour::panelWidget()
{
    return m_window.findChild<connectDevice *>();
}

QWidget *Tour::pageWidget()
{
    return findWidget(&m_window, "CurrentPage");
}

QWidget *Tour::dialog(const char *className)
{
    QWidget *found = nullptr;
    await(QStringLiteral("a %1 opens").arg(QLatin1String(className)), [&] {
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (widget->inherits(className) && widget->isVisible())
                found = widget;
        return found && found->windowHandle() && found->windowHandle()->isExposed();
    });
    return found;
}

QString Tour::pageText(const char *name)
{
    return shownText(findWidget(pageWidget(), name));
}

QString Tour::panelText(const char *name)
{
    return shownText(findWidget(panelWidget(), name));
}

void Tour::awaitPageText(const char *name, const QString &text)
{
    await(QStringLiteral("%1 of the page reads \"%2\"").arg(QLatin1String(name), text),
          [&] { return pageText(name) == text; });
}

void Tour::awaitPanelText(const char *name, const QString &text)
{
    await(QStringLiteral("%1 of the panel reads \"%2\"").arg(QLatin1String(name), text),
          [&] { return panelText(name) == text; });
}

void Tour::expectNotice(const char *key)
{
    const QString text = shownText(findWidget(dialog("PopFrame"), "label_1"));
    if (text != translated(key))
        throw TourFailure(
            QStringLiteral("the message reads \"%1\", not \"%2\"").arg(text, translated(key)));
}

void Tour::closeNotice()
{
    clickToClose(findWidget(dialog("PopFrame"), "pushButtonOK"));
}

void Tour::awaitPod(const QString &text, int mark)
{
    await(QStringLiteral("the pod says \"%1\"").arg(text),
          [&] { return m_pod.output().count(text) > mark; });
}

QStringList Tour::logged(const char *direction)
{
    const QStringList lines = panel<QPlainTextEdit>("textEdit")->toPlainText().split('\n');
    const QString mark = translated(direction) + QStringLiteral("->");
    QStringList frames;
    for (int i = 0; i + 1 < lines.size(); ++i)
        if (lines[i].endsWith(mark))
            frames << lines[i + 1];
    return frames;
}

void Tour::awaitLogged(const char *direction, int count)
{
    await(QStringLiteral("the log shows %1 frames of direction %2")
              .arg(count)
              .arg(QString::fromUtf8(direction)),
          [&] { return logged(direction).size() >= count; });
}

void Tour::awaitSent(const QString &claim, int place, const QString &digits)
{
    await(claim, [&] {
        const QStringList sent = logged("发");
        return !sent.isEmpty() && sent.last().mid(place, digits.size()) == digits;
    });
}

} // namespace tour
