#ifndef ZT_TESTS_ZTHOLLOWARRAY_H
#define ZT_TESTS_ZTHOLLOWARRAY_H

// An array without its implementation object, as after a failed construction, until it dies.

namespace ZtTest {

template <class A>
class Hollow : public A {
public:
  Hollow() : m_pKept(this->m_pBaseRef) { this->m_pBaseRef = nullptr; }
  ~Hollow() override { this->m_pBaseRef = m_pKept; }
  Hollow(const Hollow&) = delete;
  Hollow& operator=(const Hollow&) = delete;

private:
  decltype(Hollow::m_pBaseRef) m_pKept;
};

}  // namespace ZtTest

#endif
