#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include "platform/aax/AAX_IHost.h"
#include "platform/aax/AAX_IString.h"

/// Between a normalised value and a parameter's own.
template <typename T>
class AAX_ITaperDelegate {
 public:
  virtual ~AAX_ITaperDelegate() = default;
  virtual T NormalizedToReal(double normalised) const = 0;
  virtual double RealToNormalized(T real) const = 0;
};

template <typename T>
class AAX_CLinearTaperDelegate final : public AAX_ITaperDelegate<T> {
 public:
  AAX_CLinearTaperDelegate(T lowest, T highest) : low(lowest), high(highest) {}
  T NormalizedToReal(double normalised) const override {
    return static_cast<T>(static_cast<double>(low) + normalised * static_cast<double>(high - low));
  }
  double RealToNormalized(T real) const override {
    return static_cast<double>(real - low) / static_cast<double>(high - low);
  }

 private:
  T low, high;
};

class AAX_CBinaryTaperDelegate final : public AAX_ITaperDelegate<bool> {
 public:
  bool NormalizedToReal(double normalised) const override { return normalised >= 0.5; }
  double RealToNormalized(bool real) const override { return real ? 1.0 : 0.0; }
};

/// A parameter's own value as text.
template <typename T>
class AAX_IDisplayDelegate {
 public:
  virtual ~AAX_IDisplayDelegate() = default;
  virtual void ValueToString(T value, AAX_IString* text) const = 0;
};

template <typename T>
class AAX_CNumberDisplayDelegate final : public AAX_IDisplayDelegate<T> {
 public:
  void ValueToString(T value, AAX_IString* text) const override { text->Set(std::to_string(value).c_str()); }
};

class AAX_CBinaryDisplayDelegate final : public AAX_IDisplayDelegate<bool> {
 public:
  AAX_CBinaryDisplayDelegate(const char* offText, const char* onText) : off(offText), on(onText) {}
  void ValueToString(bool value, AAX_IString* text) const override { text->Set((value ? on : off).c_str()); }

 private:
  std::string off, on;
};

/// A parameter of an instance, whatever its own type. [control]
class AAX_IParameter {
 public:
  virtual ~AAX_IParameter() = default;
  virtual AAX_CParamID Identifier() const = 0;
  virtual const char* Name() const = 0;
  virtual bool Automatable() const = 0;
  virtual std::int32_t GetNumberOfSteps() const = 0;
  virtual double GetNormalizedDefaultValue() const = 0;
  virtual double GetNormalizedValue() const = 0;
  virtual void GetStringFromNormalizedValue(double normalised, AAX_IString* text) const = 0;

  // What the value is offered as; false where the type is another.
  virtual bool GetValueAsBool(bool* value) const = 0;
  virtual bool GetValueAsFloat(float* value) const = 0;
  virtual bool GetValueAsInt32(std::int32_t* value) const = 0;
  virtual bool GetValueAsDouble(double* value) const = 0;

  /// Where requests go; null for none.
  virtual void SetAutomationDelegate(AAX_IAutomationDelegate* automation) = 0;
  virtual void Touch() = 0;
  virtual void Release() = 0;
  /// Asks the host for a value. A request goes out only when it differs from the value held, which stays
  /// until the host's update comes back: so the answer to an answer ends there.
  virtual void SetNormalizedValue(double normalised) = 0;
  /// The host's update. True if the value changed.
  virtual bool UpdateNormalizedValue(double normalised) = 0;
};

template <typename T>
class AAX_CParameter final : public AAX_IParameter {
 public:
  /// `steps`: number of states of a discrete parameter, 0 for a continuous one.
  AAX_CParameter(const char* identifier, const char* parameterName, T defaultValue,
                 std::unique_ptr<AAX_ITaperDelegate<T>> taperDelegate,
                 std::unique_ptr<AAX_IDisplayDelegate<T>> displayDelegate, bool isAutomatable,
                 std::int32_t numberOfSteps)
      : id(identifier),
        name(parameterName),
        taper(std::move(taperDelegate)),
        display(std::move(displayDelegate)),
        automatable(isAutomatable),
        steps(numberOfSteps),
        defaultNormalised(taper->RealToNormalized(defaultValue)),
        normalised(defaultNormalised) {}

  AAX_CParamID Identifier() const override { return id.c_str(); }
  const char* Name() const override { return name.c_str(); }
  bool Automatable() const override { return automatable; }
  std::int32_t GetNumberOfSteps() const override { return steps; }
  double GetNormalizedDefaultValue() const override { return defaultNormalised; }
  double GetNormalizedValue() const override { return normalised; }
  void GetStringFromNormalizedValue(double value, AAX_IString* text) const override {
    display->ValueToString(taper->NormalizedToReal(value), text);
  }

  bool GetValueAsBool(bool* value) const override { return offer(value); }
  bool GetValueAsFloat(float* value) const override { return offer(value); }
  bool GetValueAsInt32(std::int32_t* value) const override { return offer(value); }
  bool GetValueAsDouble(double* value) const override { return offer(value); }

  void SetAutomationDelegate(AAX_IAutomationDelegate* delegate) override {
    automation = delegate;
    if (automation && automatable) automation->RegisterParameter(Identifier());
  }
  void Touch() override {
    if (automation) automation->PostTouchRequest(Identifier());
  }
  void Release() override {
    if (automation) automation->PostReleaseRequest(Identifier());
  }
  void SetNormalizedValue(double value) override {
    const bool differs = value != normalised;
    if (automation && (differs || requestIsOut)) automation->PostSetValueRequest(Identifier(), value);
    requestIsOut = differs;
  }
  bool UpdateNormalizedValue(double value) override {
    requestIsOut = false;
    if (value == normalised) return false;
    normalised = value;
    return true;
  }

 private:
  template <typename U>
  bool offer(U* value) const {
    if constexpr (std::is_same_v<T, U>) {
      *value = taper->NormalizedToReal(normalised);
      return true;
    }
    return false;
  }

  const std::string id, name;
  const std::unique_ptr<AAX_ITaperDelegate<T>> taper;
  const std::unique_ptr<AAX_IDisplayDelegate<T>> display;
  const bool automatable;
  const std::int32_t steps;
  const double defaultNormalised;
  double normalised;
  bool requestIsOut = false;
  AAX_IAutomationDelegate* automation = nullptr;
};
