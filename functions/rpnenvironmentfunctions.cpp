#include "functions/rpnenvironmentfunctions.h"

#include "formula/rpndictionary.h"
#include "formula/rpnexception.h"
#include "formula/rpnkeywords.h"
#include "formula/rpntree.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <chrono>
#include <thread>

namespace {

// Messages of these functions that the language file holds.
constexpr int kMsgLoadScriptCompile = 43188;
constexpr int kMsgFolderUnreadable = 43901;
constexpr int kMsgScriptNotText = 43902;
constexpr int kMsgScriptLoadsItself = 43903;

constexpr int kDigits = 16;

// A parameter written `left = right`: its two sides, else false.
bool assignmentSides(CRpnNode *node, CRpnNode *&left, CRpnNode *&right)
{
    if (!node || !node->IsPlainAssignment())
        return false;
    left = node->GetOperand(0);
    right = node->GetOperand(1);
    return left && right;
}

// The key of `key = value`: the variable's own name, or the left side's
// evaluated text.
bool keyOf(CRpnNode *left, QString &key)
{
    if (CNodeVariable *variable = left->AsVariable()) {
        key = variable->m_name;
        return true;
    }
    unsigned char st = 1;
    CRpnData value;
    left->Evaluate(value, st);
    if (st == 0)
        return false;
    key = value.GetText(kDigits);
    return true;
}

// --- MessageBox ------------------------------------------------------------------------------------

struct NamedWord {
    const char *word;
    unsigned bits;
};

constexpr NamedWord kButtonWords[] = {
    {"OK", RPN_MB_OK},
    {"OKCANCEL", RPN_MB_OKCANCEL},
    {"CANCELTRYAGAINCONTINUE", RPN_MB_CANCELTRYCONTINUE},
    {"RETRYCANCEL", RPN_MB_RETRYCANCEL},
    {"YESNO", RPN_MB_YESNO},
    {"YESNOCANCEL", RPN_MB_YESNOCANCEL},
};

constexpr NamedWord kIconWords[] = {
    {"WARNING", RPN_MB_ICONWARNING},
    {"INFORMATION", RPN_MB_ICONINFORMATION},
    {"QUESTION", RPN_MB_ICONQUESTION},
    {"STOP", RPN_MB_ICONSTOP},
};

template <std::size_t N>
bool lookUpWord(const NamedWord (&table)[N], const QString &word, unsigned &bits)
{
    for (const NamedWord &entry : table) {
        if (word == QLatin1String(entry.word)) {
            bits = entry.bits;
            return true;
        }
    }
    return false;
}

// --- ScriptOption ------------------------------------------------------------------------------------

bool isWordChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u'.';
}

// The next word of `text` from `pos`: up to 98 letters, digits, "_" or ".",
// after whatever stands before it.  Empty at the end.
QString nextWord(const QString &text, qsizetype &pos)
{
    constexpr qsizetype kMaxWord = 98;
    while (pos < text.size() && !isWordChar(text[pos]))
        ++pos;
    const qsizetype begin = pos;
    while (pos < text.size() && isWordChar(text[pos]) && pos - begin < kMaxWord)
        ++pos;
    return text.mid(begin, pos - begin);
}

int precisionOf(int digits)
{
    return digits >= 1 && digits <= 31 ? digits : 16;
}

// One option text ("LOG a b", "NOLOG:*", "PRECISION 8"); `last` when it is
// the last parameter of the call.
void applyOptionText(CEquationTree *tree, const QString &text, bool last)
{
    qsizetype pos = 0;
    const QString first = nextWord(text, pos).toUpper();
    bool logMode = false, noLogMode = false;
    if (first == u"LOG") {
        logMode = true;
    } else if (first == u"NOLOG" || first == u"LOGOFF") {
        noLogMode = true;
    } else if (first == u"NO") {
        qsizetype after = pos;
        if (nextWord(text, after).toUpper() == u"LOG") {
            noLogMode = true;
            pos = after;
        }
    } else if (first == u"PRECISION") {
        bool ok = false;
        const double digits = nextWord(text, pos).toDouble(&ok);
        if (ok)
            tree->m_defaultPrecision = precisionOf(CRpnData(digits).GetInt());
        return;
    }
    if (!logMode && !noLogMode)
        return;
    CRpnEnvironment &environment = tree->Environment();
    const QString rest = text.mid(pos).trimmed();
    QStringList names;
    for (qsizetype p = 0;;) {
        const QString name = nextWord(rest, p);
        if (name.isEmpty())
            break;
        names << name;
    }
    const bool all = (names.size() == 1 && names[0].compare(u"ALL", Qt::CaseInsensitive) == 0)
        || rest.startsWith(u'*') || rest.startsWith(QStringLiteral(":*")) || (names.isEmpty() && last);
    if (all) {
        environment.SetAllLogged(logMode);
        return;
    }
    for (const QString &name : names)
        environment.SetLogged(name, logMode);
}

// --- GetFiles ----------------------------------------------------------------------------------------

const char *const kGetFilesUsage =
    " function needs Directory path and optional wild card file filters: list = "
    "GetFiles(\"C:\\Heliomar\\TARN12\\Examples\", \"*.tarnsch\", \"*.sch\")";
const char *const kGetFilesBadFilter =
    "Error in '%s' function, parameter %i. Expecting wildcard text: list = "
    "GetFiles(\"C:\\Heliomar\\TARN12\\Examples\", \"*.tarnsch\", \"*.sch\")";

// --- LoadScript ----------------------------------------------------------------------------------------

// The script files being loaded on this thread, outermost first: a file that
// is among them would load itself without end.
thread_local QStringList t_loading;

// The text of a script file: UTF-16 after its byte order mark, else UTF-8.
// False with the cause when the file cannot be read or holds no text.
bool readScriptText(const QString &path, QString &text, QString &cause)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        cause = file.errorString();
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        cause = file.errorString();
        return false;
    }
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        QStringDecoder decode(bytes.startsWith("\xFF\xFE") ? QStringConverter::Utf16LE : QStringConverter::Utf16BE);
        text = decode(bytes.mid(2));
        if (!decode.hasError() && !text.contains(QChar(0)))
            return true;
    } else if (!bytes.contains('\0')) {
        QStringDecoder decode(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom);
        text = decode(bytes);
        if (!decode.hasError())
            return true;
    }
    cause = RpnMessage(kMsgScriptNotText);
    return false;
}

QString fileError(const QString &path, const QString &inner)
{
    return RpnFormat(QStringLiteral("Error in file \"%s\".  Error: %s"), {path, inner});
}

QString treeError(const CEquationTree &tree)
{
    return RpnMessage(kMsgLoadScriptCompile, {tree.GetErrorMessage(), tree.GetErrorRow(), tree.GetErrorCol()});
}

} // namespace

// --- MessageBox ------------------------------------------------------------------------------------

int CNodeMessageBox::DoFunction(CRpnData &result, QString &errorText)
{
    (void)errorText;
    result.SetNull();
    QString title = QStringLiteral("TARN");
    unsigned type = RPN_MB_OK;
    QString text;
    for (int i = 0; i < GetOperandCount(); ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        CRpnNode *left = nullptr, *right = nullptr;
        if (!assignmentSides(child, left, right)) {
            CRpnData value;
            if (!EvaluateOperand(i, value))
                return 0;
            text += value.GetText(kDigits);
            continue;
        }
        CNodeVariable *keyVariable = left->AsVariable();
        if (!keyVariable)
            continue;
        // A variable on the right gives its value, or, when no place knows
        // it, its own name: `BUTTON = YESNO` needs no quotes.
        QString value;
        if (CNodeVariable *variable = right->AsVariable()) {
            CRpnData known;
            value = variable->GetValue(known) && !known.IsNull() ? known.GetText(kDigits) : variable->m_name;
        } else {
            unsigned char st = 1;
            CRpnData evaluated;
            right->Evaluate(evaluated, st);
            if (st == 0)
                return 0;
            value = evaluated.GetText(kDigits);
        }
        const QString key = keyVariable->m_name.trimmed().toUpper();
        const QString word = value.trimmed().toUpper();
        unsigned bits = 0;
        if (key == u"BUTTON" || key == u"BUTTONS") {
            if (lookUpWord(kButtonWords, word, bits))
                type = (type & ~unsigned(RPN_MB_BUTTON_MASK)) | bits;
        } else if (key == u"ICON") {
            if (lookUpWord(kIconWords, word, bits))
                type = (type & ~unsigned(RPN_MB_ICON_MASK)) | bits;
        } else if (key == u"TITLE") {
            title = value;
        }
    }
    const int answer = m_tree ? m_tree->Environment().ShowMessageBox(text, title, type) : int(RPN_ID_NONE);
    const QString answerText = RpnMessageBoxAnswerText(answer);
    if (!answerText.isEmpty())
        result.SetText(answerText);
    return 1;
}

// --- Print and Clear ---------------------------------------------------------------------------------

int CNodePrint::DoFunction(CRpnData &result, QString &errorText)
{
    (void)errorText;
    result.SetNull();
    const int digits = m_tree ? m_tree->m_defaultPrecision : kDigits;
    QString line;
    bool previousNumber = false;
    for (int i = 0; i < GetOperandCount(); ++i) {
        CRpnData value;
        if (!EvaluateOperand(i, value))
            return 0;
        const bool number = value.IsReal() || value.IsInt();
        if (number && previousNumber)
            line += u' ';
        previousNumber = number;
        line += value.GetText(std::uint32_t(digits));
    }
    if (m_tree)
        m_tree->Environment().Output(m_tree, this, line, RPN_OUTPUT_PRINT);
    return 1;
}

int CNodeClear::DoFunction(CRpnData &result, QString &errorText)
{
    (void)errorText;
    result.SetNull();
    if (m_tree)
        m_tree->Environment().Output(m_tree, this, QString(), RPN_OUTPUT_CLEAR);
    return 1;
}

// --- ScriptOption --------------------------------------------------------------------------------------

void CNodeScriptOption::Evaluate(CRpnData &result, unsigned char &status)
{
    (void)status; // options report nothing of their own
    result.SetNull();
    if (!m_tree)
        return;
    const int count = GetOperandCount();
    for (int i = 0; i < count; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        QString option;
        CRpnNode *left = nullptr, *right = nullptr;
        if (assignmentSides(child, left, right)) {
            QString key;
            if (!keyOf(left, key))
                continue;
            key = key.trimmed();
            if (key.compare(u"PRECISION", Qt::CaseInsensitive) == 0) {
                unsigned char st = 1;
                CRpnData digits;
                right->Evaluate(digits, st);
                m_tree->m_defaultPrecision = st != 0 ? precisionOf(digits.GetInt()) : 16;
                continue;
            }
            QString value;
            if (CNodeVariable *variable = right->AsVariable()) {
                value = variable->m_name;
            } else {
                unsigned char st = 1;
                CRpnData evaluated;
                right->Evaluate(evaluated, st);
                if (st == 0)
                    continue;
                value = evaluated.GetText(kDigits);
            }
            value = value.trimmed();
            if (key.compare(u"LOGFILE", Qt::CaseInsensitive) == 0) {
                m_tree->Environment().SetLogFile(value);
                continue;
            }
            option = key + u':' + value;
        } else if (CNodeVariable *variable = child->AsVariable()) {
            option = variable->m_name;
        } else {
            unsigned char st = 1;
            CRpnData value;
            child->Evaluate(value, st);
            if (st != 0 && value.IsString())
                option = value.GetTextValue().trimmed();
        }
        applyOptionText(m_tree, option, i == count - 1);
    }
}

// --- Wait --------------------------------------------------------------------------------------------------

int CNodeWait::DoFunction(CRpnData &result, QString &errorText)
{
    (void)errorText;
    result.SetNull();
    int n = 0;
    if (GetOperandCount() > 0) {
        CRpnData value;
        if (EvaluateOperand(0, value))
            n = std::max(0, value.GetInt());
    }
    if (!m_tree)
        return 1;
    CRpnEnvironment &environment = m_tree->Environment();
    if (!environment.JobsInUse())
        return 1;
    // The count of running jobs seen goes on from pass to pass.
    int running = 0;
    for (;;) {
        bool again = false;
        environment.ForEachJob([&](const CRpnJob &job) {
            if (job.IsFinished())
                return true;
            ++running;
            if (n == 0 || running >= n) {
                again = true;
                return false;
            }
            return true;
        });
        if (!again || m_tree->IsStopping())
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(environment.m_waitIntervalMs));
        if (m_tree->IsStopping())
            break;
    }
    return 1;
}

// --- GetFiles ------------------------------------------------------------------------------------------------

bool RpnWildcardMatch(const QString &filter, const QString &name)
{
    // Walked from the left; on a mismatch after a "*" the star takes one
    // character more and the walk starts again behind it.
    qsizetype f = 0, n = 0, star = -1, resume = 0;
    while (n < name.size()) {
        if (f < filter.size() && filter[f] == u'*') {
            if (f + 1 == filter.size())
                return true;
            star = f++;
            resume = n;
            continue;
        }
        if (f < filter.size()
            && (filter[f] == u'?' || filter[f] == u'!' || filter[f].toCaseFolded() == name[n].toCaseFolded())) {
            ++f;
            ++n;
            continue;
        }
        if (star < 0)
            return filter.isEmpty();
        f = star + 1;
        n = ++resume;
    }
    while (f < filter.size() && filter[f] == u'*')
        ++f;
    return f == filter.size() || filter.isEmpty();
}

int CNodeGetFiles::DoFunction(CRpnData &result, QString &errorText)
{
    result.SetNull();
    CRpnData first;
    if (GetOperandCount() == 0 || !EvaluateOperand(0, first) || !first.IsString()) {
        errorText = GetName() + QLatin1String(kGetFilesUsage);
        return 0;
    }
    QStringList filters;
    CMapStringToRpnData options;
    for (int i = 1; i < GetOperandCount(); ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        if (child->IsPlainAssignment()) {
            unsigned char st = 1;
            ReadNamedParam(child, options, st, true);
            continue;
        }
        CRpnData value;
        if (!EvaluateOperand(i, value) && !value.IsString()) {
            errorText = RpnFormat(QLatin1String(kGetFilesBadFilter), {GetName(), i + 1});
            return 0;
        }
        filters << value.GetText(kDigits).toUpper();
    }
    bool enter = true;
    CRpnData subfolders;
    if (options.Lookup(QStringLiteral("SUBFOLDERS"), subfolders) && subfolders.GetInt() == 0)
        enter = false;

    const QString separator = QDir::separator();
    QString root = first.GetTextValue();
    if (!root.endsWith(u'\\') && !root.endsWith(u'/'))
        root += separator;
    QStringList folders{root};
    QStringList found;
    for (qsizetype k = 0; k < folders.size(); ++k) {
        const QString folder = folders[k];
        const QDir dir(folder);
        if (!dir.exists() || !QFileInfo(folder).isReadable()) {
            if (m_tree)
                m_tree->m_warnings.append(RpnMessage(kMsgFolderUnreadable, {GetName(), folder}));
            continue;
        }
        const QFileInfoList entries = dir.entryInfoList(
            QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Name | QDir::IgnoreCase);
        for (const QFileInfo &entry : entries) {
            // A linked folder is not entered: it may lead back up the tree.
            if (enter && entry.isDir() && !entry.isSymLink()) {
                folders << folder + entry.fileName() + separator;
                continue;
            }
            const QString upper = entry.fileName().toUpper();
            bool take = filters.isEmpty();
            for (qsizetype f = 0; !take && f < filters.size(); ++f)
                take = RpnWildcardMatch(filters[f], upper);
            if (take)
                found << folder + entry.fileName();
        }
    }
    result.SetArray(int(found.size()));
    CRpnData *items = result.GetItems();
    for (qsizetype i = 0; i < found.size(); ++i)
        items[i].SetText(found[i]);
    return 1;
}

// --- LoadScript ------------------------------------------------------------------------------------------------

int CNodeScriptLoad::DoFunction(CRpnData &result, QString &errorText)
{
    result.SetNull();
    if (GetOperandCount() == 0) {
        errorText = RpnFormat(QStringLiteral("Error in function %s. Parameter is missing: %s(filepath)"),
                              {GetName(), GetName()});
        return 0;
    }
    CRpnData first;
    const bool evaluated = EvaluateOperand(0, first);
    const QString path = evaluated ? first.GetText(kDigits).trimmed() : QString();
    const QFileInfo info(path);
    if (!evaluated || path.isEmpty() || !info.exists() || info.isDir()) {
        errorText = RpnFormat(QStringLiteral("Error in function %s(\"%s\"). File does not exist."), {GetName(), path});
        return 0;
    }
    const QString canonical = info.canonicalFilePath();
    if (t_loading.contains(canonical)) {
        errorText = RpnFormat(QStringLiteral("Error in function %s(\"%s\"). Error: %s"),
                              {GetName(), path, RpnMessage(kMsgScriptLoadsItself)});
        return 0;
    }
    QString text, cause;
    if (!readScriptText(path, text, cause)) {
        errorText = RpnFormat(QStringLiteral("Error in function %s(\"%s\"). Error: %s"), {GetName(), path, cause});
        return 0;
    }

    CRpnData variables;
    variables.SetDictionary();
    CMapStringToRpnData &map = *variables.GetDictionary();
    for (int i = 1; i < GetOperandCount(); ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        if (child->IsPlainAssignment()) {
            unsigned char st = 1;
            ReadNamedParam(child, map, st, false);
            if (st == 0)
                return 0;
            continue;
        }
        CRpnData value;
        if (!EvaluateOperand(i, value))
            return 0;
        if (value.IsDictionary()) {
            unsigned char st = 1;
            ReadNamedParam(child, map, st, false);
        } else if (value.IsString() && !value.GetTextValue().isEmpty()) {
            // A text of assignments that fill the new script's variables.
            CEquationTree setup;
            if (m_tree)
                setup.ShareEnvironment(*m_tree);
            setup.SetVariables(variables);
            if (!setup.Compile(value.GetTextValue(), nullptr, true)) {
                errorText = setup.GetErrorMessage();
                return 0;
            }
            int ok = 0;
            try {
                ok = setup.Run();
            } catch (const CRpnException &) {
                ok = 0;
            }
            if (ok != 1) {
                errorText = treeError(setup);
                return 0;
            }
        }
    }

    CEquationTree script;
    if (m_tree) {
        script.ShareEnvironment(*m_tree);
        script.m_angleMode = m_tree->m_angleMode;
        script.m_caseSensitiveNames = m_tree->m_caseSensitiveNames;
    }
    script.SetVariables(variables);
    if (!script.Compile(text, nullptr, true)) {
        errorText = fileError(path, treeError(script));
        return 0;
    }
    const QString mainKey = QStringLiteral("MainVariables");
    if (m_tree)
        map.SetAt(mainKey, m_tree->GetVariablesValue());
    t_loading.append(canonical);
    int ok = 0;
    try {
        ok = script.Run();
    } catch (const CRpnException &e) {
        if (!script.HasError()) {
            script.errorText = e.GetErrorMessage();
            script.errorRow = e.row;
            script.errorCol = e.col;
        }
        ok = 0;
    }
    t_loading.removeLast();
    map.RemoveKey(mainKey);
    // The loaded script's log lines and warnings belong to this run too.
    if (m_tree)
        m_tree->m_warnings << script.m_warnings;
    if (ok != 1) {
        errorText = fileError(path, treeError(script));
        return 0;
    }
    result = variables;
    return 1;
}

void ProvideEnvironmentFunctions(CRpnPrototypeArray &prototypes)
{
    prototypes.SetAt(RPN_NODE_PRINT, new CNodePrint);
    prototypes.SetAt(RPN_NODE_CLEAR, new CNodeClear);
    prototypes.SetAt(RPN_NODE_WAIT, new CNodeWait);
    prototypes.SetAt(RPN_NODE_GET_FILES, new CNodeGetFiles);
    prototypes.SetAt(RPN_NODE_SCRIPT_OPTION, new CNodeScriptOption);
    prototypes.SetAt(RPN_NODE_MESSAGE_BOX, new CNodeMessageBox);
    prototypes.SetAt(RPN_NODE_LOAD_SCRIPT, new CNodeScriptLoad);
}
