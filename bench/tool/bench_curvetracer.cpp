// Automatic tracing of a 2000 by 1500 datasheet picture: a grid with minor
// lines, labels, and three antialiased curves (one dashed) that cross; one
// curve is followed across the whole plot area from a spot in its middle.
#include "tool/curvetracer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <benchmark/benchmark.h>

#include <cmath>

namespace {

struct Picture {
    QImage image;
    QRect area;
    QPointF spot;
};

const Picture &picture()
{
    static const Picture p = [] {
        Picture out;
        out.image = QImage(2000, 1500, QImage::Format_RGB32);
        out.image.fill(Qt::white);
        out.area = QRect(QPoint(150, 60), QPoint(1940, 1380));
        const QRect &a = out.area;
        QPainter painter(&out.image);
        for (int i = 0; i <= 50; ++i) {
            painter.setPen(QPen(i % 5 ? QColor(222, 222, 222) : QColor(170, 170, 170), 1));
            const int x = a.left() + a.width() * i / 50, y = a.top() + a.height() * i / 50;
            painter.drawLine(x, a.top(), x, a.bottom());
            painter.drawLine(a.left(), y, a.right(), y);
        }
        painter.setPen(Qt::black);
        painter.drawRect(a);
        for (int i = 0; i <= 10; ++i)
            painter.drawText(a.left() + a.width() * i / 10 - 10, a.bottom() + 20, QString::number(i));
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor colours[] = {QColor(20, 40, 170), QColor(200, 30, 30), QColor(20, 140, 40)};
        for (int c = 0; c < 3; ++c) {
            QPainterPath path;
            for (int x = a.left() + 10; x < a.right() - 10; ++x) {
                const double u = (x - a.left()) / double(a.width());
                const double v = c == 0 ? 0.1 + 0.75 * (1 - std::exp(-3 * u))
                               : c == 1 ? 0.85 - 0.7 * std::pow(u, 1.5)
                                        : 0.3 + 0.15 * std::sin(2 * M_PI * 1.5 * u);
                const QPointF q(x, a.top() + a.height() * (1 - v));
                if (path.isEmpty())
                    path.moveTo(q);
                else
                    path.lineTo(q);
                if (c == 0 && x == a.center().x())
                    out.spot = q;
            }
            painter.setPen(QPen(colours[c], 2, c == 2 ? Qt::DashLine : Qt::SolidLine, Qt::FlatCap));
            painter.drawPath(path);
        }
        return out;
    }();
    return p;
}

void BM_TraceDatasheet2000x1500(benchmark::State &state)
{
    const Picture &p = picture();
    std::size_t columns = 0;
    for (auto _ : state) {
        const CCurveTrace t = CCurveTracer().Trace(p.image, p.spot, QRectF(p.area));
        columns = t.columns.size();
        benchmark::DoNotOptimize(columns);
    }
    state.counters["columns"] = double(columns);
}
BENCHMARK(BM_TraceDatasheet2000x1500)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
