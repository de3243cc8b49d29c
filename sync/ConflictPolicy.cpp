#include "sync/ConflictPolicy.h"

ConflictDecision decideApplyConflict(const ConflictFacts& facts)
{
    ConflictDecision d;
    switch (facts.type) {
    case ConflictType::Data:
        if (facts.change == ChangeKind::Delete) {
            d.resolution = facts.userColumnsDiffer ? Resolution::Omit : Resolution::Replace;
            if (facts.userColumnsDiffer) d.notice = NoticeKind::EditKept;
        } else {
            d.resolution = Resolution::Replace;
            if (facts.userColumnsDiffer && !facts.alreadyAsWanted) d.notice = NoticeKind::BothEdited;
        }
        break;
    case ConflictType::NotFound:
        d.resolution = Resolution::Omit;
        d.restoreWithEdit = facts.change == ChangeKind::Update && facts.setsUserColumns;
        break;
    case ConflictType::Conflict:
        d.resolution = Resolution::Replace;
        if (facts.userColumnsDiffer) d.notice = NoticeKind::BothEdited;
        break;
    case ConflictType::Constraint:
        d.resolution = Resolution::Omit;
        d.notice = NoticeKind::EditLost;
        break;
    case ConflictType::ForeignKey:
        d.resolution = Resolution::Omit;
        break;
    }
    return d;
}

ConflictDecision decideRewindConflict(const ConflictFacts& facts)
{
    ConflictDecision d;
    const bool derivedOnly = facts.type == ConflictType::Data && !facts.userColumnsDiffer;
    d.resolution = derivedOnly ? Resolution::Replace : Resolution::Abort;
    return d;
}
