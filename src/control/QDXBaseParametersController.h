#pragma once

namespace corvane {

/// What a host adapter sees of the rules between parameters. [control] throughout.
class QDXBaseParametersController {
 public:
  virtual ~QDXBaseParametersController() = default;
  /// A parameter has got a value, or a command has come; may set further parameters through the master
  /// controller.
  virtual void parameterChanged(int id, double value) = 0;
  /// The block that a host stores with its session; `data` is set to it, valid until the next call. Its size.
  virtual int getState(void** data) = 0;
  /// False, and nothing changed, for a block that is not taken.
  virtual bool setState(void* data, int size) = 0;
  /// A place of the interface that this strip has no use for.
  virtual void spareOperation() = 0;
};

}  // namespace corvane
