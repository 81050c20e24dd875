#include "support/SmallStackThread.h"

#include <pthread.h>
#include <stdexcept>

namespace tbScripts::test
{

namespace
{

void require(int errorNumber)
{
    if (errorNumber != 0)
        throw std::runtime_error("no thread with a stack of that size");
}

void* runWork(void* work)
{
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
}

} // namespace

void runOnStackOf(std::size_t stackSize, const std::function<void()>& work)
{
    pthread_attr_t attributes;
    require(pthread_attr_init(&attributes));
    require(pthread_attr_setstacksize(&attributes, stackSize));
    pthread_t thread{};
    require(
        pthread_create(&thread, &attributes, &runWork, const_cast<std::function<void()>*>(&work)));
    require(pthread_attr_destroy(&attributes));
    require(pthread_join(thread, nullptr));
}

} // namespace tbScripts::test
