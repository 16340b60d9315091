#include "editor/commands/worker.hpp"

#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>

class Worker::Pool
{
public:
    boost::asio::thread_pool threads{1};
};

Worker::Worker() : m_pool(std::make_unique<Pool>()) {}

Worker::~Worker()
{
    m_pool->threads.stop();
    m_pool->threads.join();
}

void Worker::post(std::function<void()> work)
{
    boost::asio::post(m_pool->threads, std::move(work));
}
