#include "sideplan.h"

#include "sides.h"

#include <atomic>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

using bxTurnsForm::Plan;
using bxTurnsForm::Row;

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        reset();
        m_number = other.release();
    }
    return *this;
}

int Descriptor::release() {
    return std::exchange(m_number, -1);
}

void Descriptor::reset() {
    if (m_number >= 0)
        close(m_number);
    m_number = -1;
}

SidePlan::SidePlan(bxTurnsForm::Task task, std::size_t rows, std::size_t stretches)
    : m_file(memfd_create("plan", MFD_CLOEXEC)) {
    const std::size_t clocksAt = (sizeof(Plan) + rows * sizeof(Row) + 7) / 8 * 8;
    m_size = clocksAt + stretches * sizeof(double);
    void* memory = MAP_FAILED;
    if (m_file.number() >= 0 && ftruncate(m_file.number(), static_cast<off_t>(m_size)) == 0)
        memory = mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED, m_file.number(), 0);
    if (memory == MAP_FAILED)
        throw PairError("there is no shared memory for the two sides");
    m_head = static_cast<Plan*>(memory);
    m_head->version = bxTurnsForm::version;
    m_head->task = task;
    m_head->core = -1;
    m_head->rows = static_cast<std::uint32_t>(rows);
    m_head->clocksAt = static_cast<std::uint32_t>(clocksAt);
    m_head->position[0] = m_head->position[1] = -1;
}

SidePlan::~SidePlan() {
    munmap(m_head, m_size);
}

std::span<Row> SidePlan::rows() {
    return {reinterpret_cast<Row*>(m_head + 1), m_head->rows};
}

std::span<const double> SidePlan::clocks(const Row& row, int side) const {
    const auto* const all = static_cast<const double*>(
        static_cast<const void*>(reinterpret_cast<const char*>(m_head) + m_head->clocksAt));
    return {all + row.first + (side == 0 ? 0 : row.turns), static_cast<std::size_t>(row.taken[side])};
}

long long SidePlan::progress() {
    long long sum = 0;
    for (std::int32_t& position : m_head->position)
        sum += std::atomic_ref(position).load();
    for (const Row& row : rows())
        sum += row.taken[0] + row.taken[1];
    return sum;
}
