#pragma once

#include <string_view>
#include <vector>

#include "library/zbitem.h"
#include "predicate/zbpredicate.h"

// A filter text compiled for library tracks. The lists, the smart lists and
// the search read a handful of the track's own fields against constants;
// compiled, such a comparison reads the field directly (the folded text the
// track keeps, the number, the date's milliseconds) instead of finding it by
// key name through QVariants. Every other comparison goes to the plain
// evaluator, so the answer is always the one ZBPredicate::evaluate() gives.
class ZBItemFilter
{
public:
    explicit ZBItemFilter(const ZBPredicate &predicate);

    bool matches(const ZBItem &item) const;
    // The tracks of [begin, end) that match, appended to `out` in their order.
    void filter(ZBItem *const *begin, ZBItem *const *end, ZBItemList &out) const;
    // How many comparisons were left to the plain evaluator.
    int plainCount() const { return m_plainCount; }

private:
    struct Step
    {
        enum class Kind
        {
            True,
            False,
            And,
            Or,
            Not,
            Text,
            Number,
            Date,
            Plain
        };
        Kind kind = Kind::Plain;
        // Index one past this step's subtree: children follow their parent.
        int end = 0;
        const ZBPredicateNode *node = nullptr;
        int field = 0;
        bool folded = false;
        bool real = false;
        qint64 integer = 0;
        double number = 0;
        // CONTAINS, the search's operator, is answered here without a call.
        bool contains = false;
        std::u16string_view needle;
    };

    void compile(const ZBPredicateNode &node);
    bool compileComparison(const ZBPredicateNode &node, Step &step) const;
    bool evaluate(int index, const ZBItem &item) const;

    ZBPredicate m_predicate;
    std::vector<Step> m_steps;
    int m_plainCount = 0;
};
