// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_CORE_TEST_PLACEHOLDER_H
#define KESTREL_CORE_TEST_PLACEHOLDER_H

namespace vesta::test::support {

/// The base of objects that a test may put another object in the place of.
class test_placeholder {
 public:
  virtual ~test_placeholder() = default;
};

}  // namespace vesta::test::support

#endif  // KESTREL_CORE_TEST_PLACEHOLDER_H
