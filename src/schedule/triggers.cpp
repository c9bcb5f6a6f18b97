#include "schedule/triggers.h"

#include "base/apperror.h"
#include "schedule/taskerrors.h"
#include "schedule/trigger.h"
#include "schedule/workitem.h"

#include <limits>

Triggers::Triggers(std::shared_ptr<WorkItem> item) : m_item(std::move(item))
{
    Update();
}

std::shared_ptr<Trigger> Triggers::bind(int index) const
{
    // The constructor is private to this class; make_shared cannot reach it.
    return std::shared_ptr<Trigger>(new Trigger(m_item, index));
}

std::shared_ptr<Trigger> Triggers::Add()
{
    std::shared_ptr<Trigger> trigger = bind(m_item->CreateTrigger());
    trigger->SetFlags(0);
    m_list.append(trigger);
    return trigger;
}

int Triggers::Count() const
{
    return int(m_list.size());
}

std::shared_ptr<Trigger> Triggers::item(int position) const
{
    if (position < 1 || position > m_list.size())
        throw TaskErrors::subscriptOutOfRange();
    return m_list[position - 1];
}

void Triggers::Remove(int position)
{
    if (position < std::numeric_limits<qint16>::min() || position > std::numeric_limits<qint16>::max())
        throw AppError::overflow();
    if (position < 1 || position > m_list.size())
        throw TaskErrors::subscriptOutOfRange();
    m_list.removeAt(position - 1);
    m_item->DeleteTrigger(position - 1);
}

void Triggers::Update()
{
    // Dropping the old list first lets released triggers write themselves back.
    m_list.clear();
    const int count = m_item->triggerCount();
    for (int index = 0; index < count; ++index)
        m_list.append(bind(index));
}
