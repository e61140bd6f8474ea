#include "abstracttask.h"
#include "module.h"
#include "orncore.h"
#include "ornserverelement.h"
#include "plugin.h"
#include "vieweditelementwidget.h"

#include <QtTest>

#include <cstddef>
#include <cstring>
#include <type_traits>

// The plug-in is compiled against these headers but runs against the console's own libraries:
// a virtual that moves sends every call through its slot to another function, a field that moves
// has the plug-in write into another one, and neither shows at build time.
//
// The Itanium C++ ABI stores a pointer to a virtual member function as its byte offset in the
// vtable plus one, followed by the this-adjustment, which tells which base's vtable holds the slot
// (ARM doubles the adjustment and flags virtual in it instead). A pointer to a field is its offset.
namespace {

// A virtual's slot (-1: not virtual) and the adjustment to its base, or a field's offset.
struct Place
{
    qint64 at = -1;
    qint64 adjustment = 0;
};

template <typename Member> Place placeOf(Member member)
{
    std::ptrdiff_t raw[sizeof(Member) / sizeof(std::ptrdiff_t)];
    static_assert(sizeof raw == sizeof(Member), "not the Itanium C++ ABI");
    std::memcpy(raw, &member, sizeof raw);
    if constexpr (!std::is_member_function_pointer_v<Member>)
        return {raw[0], 0};
#if defined(__arm__) || defined(__aarch64__)
    else if (raw[1] & 1)
        return {raw[0] / qint64(sizeof(void *)), raw[1] >> 1};
#else
    else if (raw[0] & 1)
        return {(raw[0] - 1) / qint64(sizeof(void *)), raw[1]};
#endif
    return {};
}

template <typename... Members> QList<Place> placesOf(Members... members)
{
    return {placeOf(members)...};
}

// Its first virtual takes the first slot after those of the Qt base.
template <typename QtBase> struct After : QtBase
{
    virtual void first() {}
};

// For rows whose members need only come in this order, not in consecutive slots.
constexpr qint64 ascending = -1;

} // namespace

Q_DECLARE_METATYPE(Place)

// A row names its members by their spelling, to say which one moved.
#define PYX_ROW(row, first, secondary, ...)                                                        \
    QTest::newRow(row) << QString(#__VA_ARGS__).split(", ") << qint64(first) << secondary          \
                       << placesOf(__VA_ARGS__)

// The plug-in writes these through their declared widths.
static_assert(std::is_same_v<decltype(TreeNode::placement), qint32> &&
              std::is_same_v<decltype(ContextOperation::contextValue), qint32>);

class TestFrameworkLayout : public QObject
{
    Q_OBJECT

private slots:
    void layout_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<qint64>("first");
        QTest::addColumn<bool>("secondary");
        QTest::addColumn<QList<Place>>("places");
        const qint64 o = placeOf(&After<QObject>::first).at;
        PYX_ROW("Plugin", o, false, &Plugin::isValid);
        PYX_ROW("TreeNode", o, false, &TreeNode::insert, &TreeNode::removeAt,
                &TreeNode::setAlternativeExpected, &TreeNode::afterLoad,
                &TreeNode::treeNodeSpecialFlags, &TreeNode::columnCount, &TreeNode::headerData,
                &TreeNode::data, &TreeNode::setData, &TreeNode::flags, &TreeNode::canFetchMore,
                &TreeNode::fetchMore);
        PYX_ROW("Module", o + 12, false, &Module::performOperation, &Module::loadSettings,
                &Module::saveSettings);
        // The server element's three follow the element's own four.
        PYX_ROW("Element", o + 12, false, &Element::elementWidget, &Element::displayChildrenVariant,
                &Element::displayChildrenVariants, &Element::questionForRemove,
                &OrnServerElement::caption, &OrnServerElement::availableOperations,
                &OrnServerElement::performOperation);
        // Slots 0 and 1 hold the destructor, here and in the tasks.
        PYX_ROW("ContextOperation", 2, false, &ContextOperation::availableOperations,
                &ContextOperation::performOperation, &ContextOperation::caption);
        PYX_ROW("Element's second base", 2, true,
                static_cast<int (Element::*)() const>(&ContextOperation::availableOperations));
        PYX_ROW("ElementWidget's second base", 4, true,
                static_cast<QString (ElementWidget::*)() const>(&ContextOperation::caption));
        using V = ViewEditElementWidget;
        PYX_ROW("ViewEditElementWidget", placeOf(&After<QWidget>::first).at, false,
                &V::availableOperations, &V::performOperation, &V::setAlternativeExpected,
                &V::setElement, &V::read, &V::caption, &V::beforeCreation, &V::exportElementData,
                &V::afterSuccessfulRead, &V::afterSuccessfulImport, &V::afterSuccessfulUpdate,
                &V::applyContentChanges, &V::linkExternalElements, &V::reset, &V::isContentValid,
                &V::blockEditWidget);
        PYX_ROW("AbstractTask", 2, false, &AbstractTask::run, &AbstractTask::afterRun);
        // Only the order of the operations the plug-in calls is the core's (see orncore.h).
        PYX_ROW("OrnCore", ascending, false, &OrnCore::domainName, &OrnCore::isServer,
                &OrnCore::isServerOn, &OrnCore::isConfigured, &OrnCore::refresh);
        PYX_ROW("Plugin fields", ascending, false, &Plugin::interfaceVersion, &Plugin::name,
                &Plugin::description, &Plugin::modules);
        PYX_ROW("TreeNode fields", ascending, false, &TreeNode::typeName, &TreeNode::parentTypeName,
                &TreeNode::placement);
        PYX_ROW("Module fields", ascending, false, &Module::moduleData, &Module::elements);
        PYX_ROW("ContextOperation fields", ascending, false, &ContextOperation::module,
                &ContextOperation::elementTypeName, &ContextOperation::parentElementType,
                &ContextOperation::contextValue, &ContextOperation::contextElement);
    }

    void layout()
    {
        QFETCH(QStringList, names);
        QFETCH(qint64, first);
        QFETCH(bool, secondary);
        QFETCH(QList<Place>, places);
        for (int i = 0; i < places.size(); ++i) {
            const Place &place = places.at(i);
            const QString where = QStringLiteral("%1 at %2").arg(names.at(i)).arg(place.at);
            QVERIFY2(place.at >= 0, qPrintable(where));
            if (first != ascending)
                QVERIFY2(place.at == first + i, qPrintable(where));
            else if (i > 0)
                QVERIFY2(places.at(i - 1).at < place.at, qPrintable(where + " comes too early"));
            QVERIFY2((place.adjustment != 0) == secondary, qPrintable(where + " of another base"));
        }
    }
};

QTEST_MAIN(TestFrameworkLayout)
#include "tst_frameworklayout.moc"
