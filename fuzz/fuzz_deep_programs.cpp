// Deep and long programs, made from a few bytes: nested lists, IF blocks,
// parentheses and calls, sums of hundreds of thousands of terms, lists built
// in loops to tens of thousands of levels and then printed, compared,
// combined and copied, and values that share their halves.  The bytes choose
// the shape, its size and the operations; the text made from them goes
// through the whole language.  Nothing may crash; a failed compile or run
// leaves a message, and a printed value stays within its bounds.
//
// Runs are capped at two seconds by a watchdog thread: these programs are
// meant to be big, but not to run for long.

#include "functions/rpnfunctions.h"
#include "formula/rpnexception.h"
#include "formula/rpntree.h"
#include "fuzzwatchdog.h"

#include <QString>
#include <chrono>
#include <cstdint>
#include <cstdlib>

namespace {

void check(bool ok)
{
    if (!ok)
        std::abort();
}

CFuzzWatchdog &watchdog()
{
    static CFuzzWatchdog *dog = new CFuzzWatchdog(std::chrono::milliseconds(2000), std::chrono::milliseconds(20));
    return *dog;
}

// The input read as a recipe; past its end every read gives 0.
class Recipe
{
public:
    Recipe(const std::uint8_t *data, std::size_t size) : m_data(data), m_size(size) {}
    int Byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    // A size from 1 to `most`, spread evenly over the scale of two bytes.
    int Size(int most)
    {
        const int raw = (Byte() << 8) | Byte();
        return 1 + int(std::int64_t(raw) * (most - 1) / 65535);
    }
    bool AtEnd() const { return m_at >= m_size; }

private:
    const std::uint8_t *m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

const char *const kBinary[] = {"+", "-", "*", "/", "==", "!=", "<", "&&", "||", "^", "%", ","};
const char *const kUnary[] = {"-", "!", "~", "sqrt", "abs", "sin", "IsEmpty", "TypeName"};
const char *const kListOps[] = {"l", "l == l", "l + l", "l * 2", "-l", "m = l; m[1][0] = 5; m", "l != m",
                                "l > 3", "{l, l}", "Copy(l)", "l[1][1][1]", "ToString(l)"};

QString repeat(const char *piece, int times)
{
    return QString::fromLatin1(piece).repeated(times);
}

QString makeProgram(Recipe &r)
{
    const int shape = r.Byte() % 9;
    switch (shape) {
    case 0: { // nested lists
        const int depth = r.Size(300000);
        return repeat("{", depth) + QStringLiteral("1,2") + repeat("}", depth);
    }
    case 1: { // nested IF blocks, with or without braces
        const int depth = r.Size(100000);
        const bool braces = r.Byte() & 1;
        return QStringLiteral("x = 1; ") + repeat(braces ? "if (x) { " : "if (x) ", depth) + u'1'
            + (braces ? repeat(" }", depth) : QString());
    }
    case 2: { // a long flat expression
        const int terms = r.Size(300000);
        const char *op = kBinary[r.Byte() % std::size(kBinary)];
        return u'1' + (QString::fromLatin1(op) + u'1').repeated(terms);
    }
    case 3: { // nested unary operators and functions
        const int depth = r.Size(200000);
        const QString op = QString::fromLatin1(kUnary[r.Byte() % std::size(kUnary)]);
        return QStringLiteral("y = ") + (op + u'(').repeated(depth) + u'2' + QString(depth, u')');
    }
    case 4: { // a linked list built in a loop, then worked on
        const int length = r.Size(300000);
        const char *op = kListOps[r.Byte() % std::size(kListOps)];
        return QStringLiteral("l = {}; m = 0; i = 0; while (i < %1) { l = {i, l}; i++ }; ").arg(length)
            + QString::fromLatin1(op);
    }
    case 5: { // a value that shares its halves, printed
        const int doublings = r.Byte() % 40;
        return QStringLiteral("a = {1}; i = 0; while (i < %1) { a = {a, a}; i++ }; a").arg(doublings);
    }
    case 6: { // calls of a function, each through a deep list
        const int calls = r.Size(400);
        const int depth = r.Size(2000);
        return QStringLiteral("function f(n) { if (n > 0) { ") + repeat("{", depth) + QStringLiteral("f(n-1)")
            + repeat("}", depth) + QStringLiteral(" } else { 0 } }; f(%1)").arg(calls);
    }
    case 7: { // names called as functions
        const char *names[] = {"foo(1)", "x = 1; x(2)", "sinn(2) + 1", "f = 3; f(f)", "{a(1), 2}"};
        return QString::fromLatin1(names[r.Byte() % std::size(names)]);
    }
    default: { // pieces of the above, nested by the rest of the input
        QString text = QStringLiteral("1");
        while (!r.AtEnd()) {
            const int times = r.Size(5000);
            switch (r.Byte() % 5) {
            case 0: text = repeat("{", times) + text + repeat("}", times); break;
            case 1: text = repeat("(", times) + text + repeat(")", times); break;
            case 2: text += QStringLiteral("+1").repeated(times); break;
            case 3: text = repeat("-(", times) + text + QString(times, u')'); break;
            default: text = QStringLiteral("if (1) { ") + text + QStringLiteral(" }"); break;
            }
        }
        return text;
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    RegisterFunctionLibrary();
    Recipe recipe(data, size);
    const QString text = makeProgram(recipe);

    CEquationTree tree;
    if (!tree.Compile(text, nullptr, true)) {
        check(tree.HasError() && !tree.GetErrorMessage().isEmpty());
        return 0;
    }
    CRpnData value;
    int status = 0;
    watchdog().Begin(&tree);
    try {
        status = tree.Run(value);
    } catch (const CRpnException &) {
        status = -1;
    }
    watchdog().End();
    if (status == 0 && !tree.IsStopping())
        check(tree.HasError());
    // The longest text is cut, with "..." to show it.
    const QString printed = value.GetText(RPN_TEXT_BRACES);
    check(printed.size() <= RpnMaxTextLength + 3);
    return 0;
}
