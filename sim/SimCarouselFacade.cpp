#include "sim/SimCarouselFacade.h"

#include <algorithm>

#include "sim/Text.h"

namespace tessarine {
namespace sim {

std::string SimCarouselFacade::mount(std::string name) {
    auto carousel = std::find_if(carousels_.begin(), carousels_.end(), [&](const auto& c) { return c.name == name; });
    if (carousel == carousels_.end()) {
        log_.request(Family::Carousel, CAROUSEL_MOUNT, [&] {
            return "mount " + quoted(name) + " -> unknown carousel";
        });
        return {};
    }
    unsigned generation;
    Scheduler::Group group;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        generation = ++generations_[name];
        mounted_.insert(name);
        group = downloadTasks(name);
    }
    for (const auto& download : carousel->downloads)
        scheduler_.after(std::chrono::duration<double>(download.after),
                         [this, name, generation, download] { this->download(name, generation, download); }, group);
    log_.request(Family::Carousel, CAROUSEL_MOUNT, [&] {
        return "mount " + quoted(name) + " -> " + quoted(carousel->mountAnswer);
    });
    return carousel->mountAnswer;
}

void SimCarouselFacade::umount(std::string name) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (mounted_.erase(name) > 0) {
            ++generations_[name];
            downloadTasks(name);
        }
    }
    log_.request(Family::Carousel, CAROUSEL_UMOUNT, [&] { return "unmount " + quoted(name); });
}

Scheduler::Group SimCarouselFacade::downloadTasks(const std::string& name) {
    Scheduler::Group& group = groups_[name];
    if (group == Scheduler::NO_GROUP) group = scheduler_.newGroup();
    scheduler_.cancel(group);
    return group;
}

void SimCarouselFacade::addCarouselListener(middlewarefacade::CarouselListener* listener) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        listeners_.insert(listener);
    }
    log_.request(Family::Carousel, CAROUSEL_ADD_LISTENER, "add listener");
}

void SimCarouselFacade::removeCarouselListener(middlewarefacade::CarouselListener* listener) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        listeners_.erase(listener);
    }
    log_.request(Family::Carousel, CAROUSEL_REMOVE_LISTENER, "remove listener");
}

void SimCarouselFacade::download(const std::string& name, unsigned generation,
                                 const CarouselSettings::Download& download) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (mounted_.count(name) == 0 || generations_[name] != generation) return;
    }
    if (notifyDownload(download.first, download.second) == Delivery::NoListener)
        log_.note("download " + quoted(download.first) + " of " + quoted(name) + " dropped: no carousel listener");
}

Delivery SimCarouselFacade::notifyDownload(const std::string& first, const std::string& second) {
    std::set<middlewarefacade::CarouselListener*> listeners;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        listeners = listeners_;
    }
    if (listeners.empty()) return Delivery::NoListener;
    return gate_.pass("download " + quoted(first), Family::Carousel, CAROUSEL_DOWNLOAD_COMPLETE,
                      "download complete " + quoted(first) + " " + quoted(second), [&] {
                          for (auto* listener : listeners) {
                              if (second.empty())
                                  listener->downloadComplete(first);
                              else
                                  listener->downloadComplete(first, second);
                          }
                      });
}

}  // namespace sim
}  // namespace tessarine
