#include "platform/aaxhost/PrivateFields.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>

namespace corvane::aaxhost {

FieldWindow::FieldWindow(const std::byte* initial, std::size_t bytes)
    : slotBytes(bytes), slotMask(bytes), written(bytes), writtenBy(bytes) {
  for (Image& image : images) image.bytes.assign(initial, initial + bytes);
}

void FieldWindow::read(std::size_t offset, std::size_t size, std::byte* to) {
  if (middle.load(std::memory_order_relaxed) & kFresh)
    reading = middle.exchange(reading, std::memory_order_acq_rel) & ~kFresh;
  const Image& image = images[reading];
  for (std::size_t k = offset; k < offset + size; ++k)
    *to++ = writtenBy[k] > image.writes ? written[k] : image.bytes[k];
}

void FieldWindow::write(std::size_t offset, std::size_t size, const std::byte* from) {
  ++writes;
  std::copy_n(from, size, written.begin() + static_cast<std::ptrdiff_t>(offset));
  std::fill_n(writtenBy.begin() + static_cast<std::ptrdiff_t>(offset), size, writes);

  // A write that was not taken yet is called back and goes along with this one.
  Slot expected = Slot::Full;
  if (!slot.compare_exchange_strong(expected, Slot::Empty, std::memory_order_acq_rel)) {
    while (slot.load(std::memory_order_acquire) == Slot::Taking) std::this_thread::yield();
    std::fill(slotMask.begin(), slotMask.end(), 0);
  }
  std::copy_n(from, size, slotBytes.begin() + static_cast<std::ptrdiff_t>(offset));
  std::fill_n(slotMask.begin() + static_cast<std::ptrdiff_t>(offset), size, 1);
  slotNumber = writes;
  slot.store(Slot::Full, std::memory_order_release);
}

void FieldWindow::takeWrites(std::byte* memory) {
  Slot expected = Slot::Full;
  if (!slot.compare_exchange_strong(expected, Slot::Taking, std::memory_order_acq_rel)) return;
  for (std::size_t k = 0; k < slotBytes.size(); ++k)
    if (slotMask[k]) memory[k] = slotBytes[k];
  taken = slotNumber;
  slot.store(Slot::Empty, std::memory_order_release);
}

void FieldWindow::publish(const std::byte* memory) {
  Image& image = images[filling];
  std::memcpy(image.bytes.data(), memory, image.bytes.size());
  image.writes = taken;
  filling = middle.exchange(filling | kFresh, std::memory_order_acq_rel) & ~kFresh;
}

PrivateFields::PrivateFields(const Description& description, AAX_IEffectParameters& owner, Mode hostMode)
    : parameters(owner), mode(hostMode) {
  for (const Field& field : description.fields) {
    if (field.kind != FieldKind::PrivateData) continue;
    Held held{
        .index = field.index, .bytes = field.bytes, .memory = std::make_unique<FieldMemory>(field.bytes)};
    const AAX_Result result = parameters.ResetFieldData(field.index, held.memory->get(), field.bytes);
    if (result != AAX_SUCCESS) {
      freeAll();
      throw HostError("private field " + std::to_string(field.index) +
                      " cannot be filled: " + std::to_string(result));
    }
    if (mode == Mode::Live && field.bytes <= kLargestWindow)
      held.window = std::make_unique<FieldWindow>(held.memory->get(), field.bytes);
    all.push_back(std::move(held));
  }
}

PrivateFields::~PrivateFields() { freeAll(); }

void PrivateFields::freeAll() {
  while (!all.empty()) {
    parameters.FreeFieldData(all.back().index, all.back().memory->get(), all.back().bytes);
    all.pop_back();
  }
}

AAX_Result PrivateFields::refill(AAX_CFieldIndex field) {
  const auto at =
      std::find_if(all.begin(), all.end(), [field](const Held& held) { return held.index == field; });
  if (at == all.end()) return AAX_ERROR_INVALID_FIELD_INDEX;
  return parameters.ResetFieldData(field, at->memory->get(), at->bytes);
}

void* PrivateFields::memory(AAX_CFieldIndex field) const {
  const auto at =
      std::find_if(all.begin(), all.end(), [field](const Held& held) { return held.index == field; });
  return at == all.end() ? nullptr : at->memory->get();
}

AAX_Result PrivateFields::find(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                               Held** found) {
  const auto at =
      std::find_if(all.begin(), all.end(), [field](const Held& held) { return held.index == field; });
  if (at == all.end()) return AAX_ERROR_INVALID_FIELD_INDEX;
  if (offset > at->bytes || size > at->bytes - offset) return AAX_ERROR_INVALID_INTERNAL_DATA;
  if (mode != Mode::Offline && !at->window) return AAX_ERROR_UNIMPLEMENTED;
  *found = &*at;
  return AAX_SUCCESS;
}

AAX_Result PrivateFields::ReadPortDirect(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                                         void* buffer) {
  if (!buffer) return AAX_ERROR_NULL_OBJECT;
  Held* held = nullptr;
  if (const AAX_Result result = find(field, offset, size, &held); result != AAX_SUCCESS) return result;
  if (held->window)
    held->window->read(offset, size, static_cast<std::byte*>(buffer));
  else
    std::memcpy(buffer, held->memory->get() + offset, size);
  return AAX_SUCCESS;
}

AAX_Result PrivateFields::WritePortDirect(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                                          const void* buffer) {
  if (!buffer) return AAX_ERROR_NULL_OBJECT;
  Held* held = nullptr;
  if (const AAX_Result result = find(field, offset, size, &held); result != AAX_SUCCESS) return result;
  if (held->window)
    held->window->write(offset, size, static_cast<const std::byte*>(buffer));
  else
    std::memcpy(held->memory->get() + offset, buffer, size);
  return AAX_SUCCESS;
}

void PrivateFields::beforeRender() {
  for (Held& held : all)
    if (held.window) held.window->takeWrites(held.memory->get());
}

void PrivateFields::afterRender() {
  for (Held& held : all)
    if (held.window) held.window->publish(held.memory->get());
}

}  // namespace corvane::aaxhost
