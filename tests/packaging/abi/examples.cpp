// A small library with the changes that docs/abi.md has for examples, each chosen by a macro. What
// a program sees of it is all here.

#define EXPORTED __attribute__((visibility("default")))

#if defined(MOVED_VALUE)
enum class Result { Success, New, Failure };
#elif defined(APPENDED_VALUE)
enum class Result { Success, Failure, New };
#else
enum class Result { Success, Failure };
#endif

#ifdef ADDED_BASE
struct EXPORTED Named {
    long name = 0;
};
class EXPORTED Description : public Named {
#else
class EXPORTED Description {
#endif
  public:
    virtual ~Description();
    virtual int fields();
#ifdef ADDED_VIRTUAL
    virtual int owner();
#endif
};

class EXPORTED Session {
  public:
#ifdef ADDED_PARAMETER
    Result collect(Description* description, int event, bool urgent = false);
#else
    Result collect(Description* description, int event);
#endif
#ifndef REMOVED_FUNCTION
    Result send();
#endif
#ifdef ADDED_FUNCTION
    int queued() const;
#endif

  private:
    int events = 0;
#ifdef ADDED_MEMBER
    long bytes = 0;
#endif
};

Description::~Description() = default;
int Description::fields() { return 0; }
#ifdef ADDED_VIRTUAL
int Description::owner() { return 0; }
#endif

#ifdef ADDED_PARAMETER
Result Session::collect(Description* description, int event, bool /*urgent*/) {
#else
Result Session::collect(Description* description, int event) {
#endif
    events += description->fields() == event ? 1 : 0;
    return Result::Success;
}
#ifndef REMOVED_FUNCTION
Result Session::send() { return events > 0 ? Result::Success : Result::Failure; }
#endif
#ifdef ADDED_FUNCTION
int Session::queued() const { return events; }
#endif
#ifdef ADDED_CLASS
class EXPORTED Consent {
  public:
    Result ask();
};
Result Consent::ask() { return Result::Success; }
#endif
