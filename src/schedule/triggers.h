#pragma once

#include <QList>

#include <memory>

class Trigger;
struct WorkItem;

// The triggers of one task, one Trigger per trigger of the task, in the
// task's order, found by one-based position.
class Triggers
{
public:
    Triggers(const Triggers &) = delete;
    Triggers &operator=(const Triggers &) = delete;

    // Creates a trigger on the task and returns it, its flags cleared.
    std::shared_ptr<Trigger> Add();
    int Count() const;
    std::shared_ptr<Trigger> item(int position) const;
    QList<std::shared_ptr<Trigger>> NewEnum() const { return m_list; }
    // Removes list entry n and then the task's trigger n - 1. The list is not
    // read again: the Trigger objects that remain keep the indexes they were
    // made with, so call Update before using them further.
    void Remove(int position);
    // Rebuilds the list from the task's triggers.
    void Update();

private:
    friend class Task;
    explicit Triggers(std::shared_ptr<WorkItem> item);

    std::shared_ptr<Trigger> bind(int index) const;

    std::shared_ptr<WorkItem> m_item;
    QList<std::shared_ptr<Trigger>> m_list;
};
