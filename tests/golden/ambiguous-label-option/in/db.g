unread
