// The program up to its first paint; the rest of it is its own main().

#include "bench/firstpaint.h"

static void watchPaints()
{
    qApp->installEventFilter(new FirstPaint(qApp));
}
Q_COREAPP_STARTUP_FUNCTION(watchPaints)
